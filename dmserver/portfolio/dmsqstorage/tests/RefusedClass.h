// Makes the creation of a class fail with a status of the test's choice, for the length of a scope.
//
// The test program has a CoCreateInstance of its own, which the loader binds before that of the platform; it passes
// on whatever is not refused. Only one class at a time, and for all threads.
#pragma once

#include "platform/com/activation.h"

namespace tests {

class CRefusedClass {
public:
    CRefusedClass(REFCLSID clsid, HRESULT status);
    ~CRefusedClass();
    CRefusedClass(const CRefusedClass&) = delete;
    CRefusedClass& operator=(const CRefusedClass&) = delete;
};

} // namespace tests
