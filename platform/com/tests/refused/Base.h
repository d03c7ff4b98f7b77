#pragma once

#include "platform/com/dispatch.h"

struct ISample : IDispatch {
    virtual HRESULT Select(LONG Mode, BSTR Name, LONG* Count) = 0;
};
