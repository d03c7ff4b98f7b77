#include "SymbolFilter.h"

#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

namespace sqCli {

platform::CComPtr<IDM_dmudfcom::IdmRequest> MakeRequest(const tagSymbolFilter& filter) {
    platform::CComPtr<IDM_dmudfcom::IdmRequest> request;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmudfcom::CLSID_dmRequest, request));
    request->put_Datafeed(0, filter.Feed);
    request->put_ExchangeId(0, filter.Exchange);
    request->put_Category(0, filter.Category);
    request->put_SymbolName(0, platform::CBstr(platform::FromUtf8(filter.Name)).Get());
    request->put_Description(0, platform::CBstr(platform::FromUtf8(filter.Description)).Get());
    return request;
}

} // namespace sqCli
