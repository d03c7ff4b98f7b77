// Makes the creation of a class fail with a status of the test's choice, for the length of a scope.
//
// The test program has a CoCreateInstance of its own, which the loader binds before that of the platform; it passes
// on whatever is not refused. Only one class at a time, and for all threads.
#pragma once

#include "platform/com/activation.h"

#include <functional>

namespace tests {

class CRefusedClass {
public:
    CRefusedClass(REFCLSID clsid, HRESULT status);
    ~CRefusedClass();
    CRefusedClass(const CRefusedClass&) = delete;
    CRefusedClass& operator=(const CRefusedClass&) = delete;
};

// Shows a test each new object of a class before the caller gets it. The test may put another in its place, or take
// it away and answer with a status of its own. As above.
class CWatchedClass {
public:
    using Watch = std::function<HRESULT(void** made)>;

    CWatchedClass(REFCLSID clsid, Watch watch);
    ~CWatchedClass();
    CWatchedClass(const CWatchedClass&) = delete;
    CWatchedClass& operator=(const CWatchedClass&) = delete;
};

} // namespace tests
