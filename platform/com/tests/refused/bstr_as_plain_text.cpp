#include "Base.h"

// Would stop at an embedded zero.
platform::CBstr CopyOf(BSTR text) { return platform::CBstr(text); }
