// A library to be opened by name.
extern "C" int answer() {
    return ANSWER;
}
