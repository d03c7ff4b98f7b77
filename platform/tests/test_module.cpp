// What the tests look for in a module.
extern "C" int SqTestAnswer() { return 42; }
