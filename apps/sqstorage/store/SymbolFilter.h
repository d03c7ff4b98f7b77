// Which symbols are wanted. A value that is not set does not narrow them down.
#pragma once

#include "Store.h"

#include <string>

namespace sqCli {

struct tagSymbolFilter {
    LONG Feed = 0;
    LONG Exchange = 0;
    LONG Category = -1;
    // How the name begins, in whatever letter case; "%" stands for any characters and "_" for one. "*" is no
    // filter.
    std::string Name = {};
    // How the description begins, in whatever letter case. The store looks at it only when there is no name.
    std::string Description = {};
};

[[nodiscard]] platform::CComPtr<IDM_dmudfcom::IdmRequest> MakeRequest(const tagSymbolFilter& filter);

} // namespace sqCli
