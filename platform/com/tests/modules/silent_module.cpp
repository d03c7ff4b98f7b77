// A shared library that is no module of classes: it has no DllGetClassObject.
extern "C" int DoNothing();
extern "C" int DoNothing() { return 0; }
