#include "Base.h"

struct INameless : IUnknown {
    virtual HRESULT Touch() = 0;
};

const GUID& Identifier = platform::UuidOf<INameless>;
