// A library to be opened by name.
extern "C" int Answer() {
    return ANSWER;
}
