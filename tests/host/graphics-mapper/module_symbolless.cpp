// A library of the right name that is no mapper implementation.
extern "C" int unrelated() {
    return 0;
}
