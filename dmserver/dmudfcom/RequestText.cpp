#include "dmserver/dmudfcom/interface/RequestText.h"

#include "Base64.h"
#include "CarrierText.h"
#include "SealedBytes.h"
#include "VariantBytes.h"

#include <stdexcept>

namespace IDM_dmudfcom {

namespace {

namespace wire = sqstorage::carriers;

constexpr std::size_t MaxEntries = 65536; // of one kind
constexpr LONG LastProperty = static_cast<LONG>(ERequestProperty::BuildOnVolume);

// Whether the number is that of a property of a number or a text: the ids between are those of methods.
bool IsProperty(LONG id) {
    const bool isMethod = (id >= 4 && id <= 7) || id == 34 || id == 35 || id == 56;
    return id >= 1 && id <= LastProperty && !isMethod;
}

[[noreturn]] void Refuse(ERequestProperty property, const char* reason) {
    throw std::invalid_argument("the request's property " + std::to_string(static_cast<LONG>(property)) + " " +
                                reason);
}

void CheckKey(const tagRequestData::Key& key, bool isText) {
    const auto [property, mode] = key;
    if (!IsProperty(static_cast<LONG>(property)))
        Refuse(property, "does not exist");
    if (IsTextProperty(property) != isText)
        Refuse(property, isText ? "is a number, not a text" : "is a text, not a number");
    if (mode != 0 && !IsModeProperty(property))
        Refuse(property, "takes no Mode");
}

wire::Value& AddValue(wire::Request& request, const tagRequestData::Key& key, bool isText) {
    CheckKey(key, isText);
    wire::Value& value = *request.add_values();
    value.set_property(static_cast<std::uint32_t>(key.first));
    value.set_mode(key.second);
    return value;
}

void WriteAttribute(LONG id, const platform::CVariant& value, wire::Attribute& target, const char* what) {
    target.set_id(id);
    if (!WriteVariant(value.Get(), *target.mutable_value()))
        throw std::invalid_argument(std::string("the request's ") + what + " " + std::to_string(id) +
                                    " is of a type that cannot be carried or is no Unicode text");
}

bool ReadValue(const wire::Value& source, tagRequestData& data) {
    const bool isText = source.value_case() == wire::Value::kText;
    if (source.value_case() == wire::Value::VALUE_NOT_SET || source.property() > LastProperty ||
        !IsProperty(static_cast<LONG>(source.property())))
        return false;
    const auto property = static_cast<ERequestProperty>(source.property());
    const tagRequestData::Key key{property, source.mode()};
    if (IsTextProperty(property) != isText || (source.mode() != 0 && !IsModeProperty(property)))
        return false;
    if (!isText)
        return data.Numbers.emplace(key, source.number()).second;
    if (!IsUtf8(source.text()))
        return false;
    platform::CBstr text;
    text.Attach(MakeBstr(source.text()));
    return data.Texts.emplace(key, text.View()).second;
}

bool ReadAttribute(const wire::Attribute& source, std::map<LONG, platform::CVariant>& target) {
    auto value = ReadVariant(source.value());
    return value && target.emplace(source.id(), std::move(*value)).second;
}

bool ReadRequest(const wire::Request& source, tagRequestData& data) {
    for (const wire::Value& value : source.values())
        if (!ReadValue(value, data))
            return false;
    for (const wire::Attribute& attribute : source.attributes())
        if (!ReadAttribute(attribute, data.Attributes))
            return false;
    for (const wire::Attribute& supplement : source.supplements())
        if (!ReadAttribute(supplement, data.Supplements))
            return false;
    auto sent = ReadVariant(source.sent());
    if (sent)
        data.Sent = std::move(*sent);
    return sent.has_value();
}

bool HasFewEntries(std::string_view content) {
    for (const int number : {wire::Request::kValuesFieldNumber, wire::Request::kAttributesFieldNumber,
                             wire::Request::kSupplementsFieldNumber})
        if (CountFields(content, number).value_or(MaxEntries + 1) > MaxEntries)
            return false;
    return true;
}

} // namespace

bool IsTextProperty(ERequestProperty property) {
    switch (property) {
    case ERequestProperty::SymbolName:
    case ERequestProperty::SymbolRoot:
    case ERequestProperty::Description:
    case ERequestProperty::Sessions:
    case ERequestProperty::SessionsTZI:
    case ERequestProperty::ExchangeTZI:
    case ERequestProperty::ExchangeName:
    case ERequestProperty::DataFeedName:
        return true;
    default:
        return false;
    }
}

bool IsModeProperty(ERequestProperty property) {
    switch (property) {
    case ERequestProperty::Datafeed:
    case ERequestProperty::Symbol:
    case ERequestProperty::SymbolName:
    case ERequestProperty::SymbolRoot:
    case ERequestProperty::Description:
    case ERequestProperty::Category:
    case ERequestProperty::PriceScale:
    case ERequestProperty::ExchangeId:
    case ERequestProperty::ExchangeName:
        return true;
    default:
        return false;
    }
}

std::wstring MakeRequestText(const tagRequestData& data) {
    wire::Request request;
    for (const auto& [key, number] : data.Numbers)
        AddValue(request, key, false).set_number(number);
    for (const auto& [key, text] : data.Texts) {
        auto stored = ToStored(text);
        if (!stored)
            Refuse(key.first, "is no Unicode text");
        AddValue(request, key, true).set_text(std::move(*stored));
    }
    for (const auto& [id, value] : data.Attributes)
        WriteAttribute(id, value, *request.add_attributes(), "attribute");
    for (const auto& [mode, value] : data.Supplements)
        WriteAttribute(mode, value, *request.add_supplements(), "supplement of Mode");
    if (data.Sent.Type() != VT_EMPTY && !WriteVariant(data.Sent.Get(), *request.mutable_sent()))
        throw std::invalid_argument("the request's sent data are of a type that cannot be carried");
    return ToBase64(Seal(EContent::Request, request.SerializeAsString()));
}

std::optional<tagRequestData> ReadRequestText(std::wstring_view text) {
    const auto bytes = FromBase64(text);
    const auto content = bytes ? Unseal(EContent::Request, *bytes) : std::nullopt;
    if (!content || !HasFewEntries(*content))
        return std::nullopt;
    wire::Request request;
    tagRequestData data;
    if (!request.ParseFromString(*content) || !ReadRequest(request, data))
        return std::nullopt;
    return data;
}

} // namespace IDM_dmudfcom
