// One exported function, named by the build, so a test can tell which of
// two loaded libraries answers.
extern "C" int UDLL_ANSWER() {
    return 42;
}
