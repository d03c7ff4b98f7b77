#include "diagnostics/interface/BugSlayer.h"

namespace BugSlayerUtil {

namespace {

template <class Reporter>
Reporter At(const std::source_location& place) {
    return Reporter(GetClient(), place.file_name(), place.line(), 0, nullptr, place.function_name());
}

void SubmitFailure(BugSlayerClient& client, AsserterClass& asserter, const CText& text,
                   std::optional<HRESULT> status) {
    client.ApplyAction(status ? asserter(text.View(), *status) : asserter(text.View()));
}

} // namespace

void CScope::AssertFailed(const CText& text, std::optional<HRESULT> status) const {
    const std::source_location& place = text.Place();
    AsserterClass asserter(m_Client, place.file_name(), place.line(), m_Group, m_Function, m_Signature);
    SubmitFailure(m_Client, asserter, text, status);
}

void CScope::Throw(CText text) const {
    const std::source_location& place = text.Place();
    ThrowError(m_Client, place.file_name(), place.line(), m_Group, m_Function, m_Signature)(text);
}

void CScope::ReportCaught(const CText& text) const {
    CatchAndCall<ShowError>(m_Client, m_File, m_Line, m_Group, m_Function, m_Signature)(text);
}

void CScope::RaiseCaught(const CText& text) const {
    CatchAndCall<ThrowError>(m_Client, m_File, m_Line, m_Group, m_Function, m_Signature)(text);
    throw; // never reached: the line above throws
}

bool Assert(bool condition, CText text) {
    if (!condition) {
        auto asserter = At<AsserterClass>(text.Place());
        SubmitFailure(GetClient(), asserter, text, std::nullopt);
    }
    return condition;
}

bool Check(HRESULT status, CText text) {
    if (status != S_OK) {
        auto asserter = At<AsserterClass>(text.Place());
        SubmitFailure(GetClient(), asserter, text, status);
    }
    return status == S_OK;
}

void Throw(CText text) { At<ThrowError>(text.Place())(text); }

void ReportCaught(CText text) { At<CatchAndCall<ShowError>>(text.Place())(text); }

void RaiseCaught(CText text) {
    At<CatchAndCall<ThrowError>>(text.Place())(text);
    throw; // never reached: the line above throws
}

} // namespace BugSlayerUtil
