#include "SealedBytes.h"

#include "Carriers.pb.h"

#include <boost/crc.hpp>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <limits>
#include <span>

namespace IDM_dmudfcom {

namespace {

namespace wire = sqstorage::carriers;
using google::protobuf::internal::WireFormatLite;

constexpr std::uint32_t Version = 1;
constexpr VARTYPE ByteArray = VT_ARRAY | VT_UI1;

std::uint32_t ChecksumOf(std::string_view bytes) {
    boost::crc_optimal<32, 0x1EDC6F41, 0xFFFFFFFF, 0xFFFFFFFF, true, true> checksum;
    checksum.process_bytes(bytes.data(), bytes.size());
    return checksum.checksum();
}

} // namespace

std::string Seal(EContent kind, std::string content) {
    wire::Sealed sealed;
    sealed.set_version(Version);
    sealed.set_kind(static_cast<std::uint32_t>(kind));
    sealed.set_checksum(ChecksumOf(content));
    sealed.set_content(std::move(content));
    return sealed.SerializeAsString();
}

std::optional<std::string> Unseal(EContent kind, std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<int>::max())
        return std::nullopt;
    wire::Sealed sealed;
    if (!sealed.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
        return std::nullopt;
    // Sealing the content again must give the same bytes: that tests version, kind and checksum in one, and no byte
    // around a content that is right can be another.
    if (Seal(kind, sealed.content()) != bytes)
        return std::nullopt;
    return std::move(*sealed.mutable_content());
}

std::optional<std::size_t> CountFields(std::string_view message, int number) {
    google::protobuf::io::CodedInputStream input(reinterpret_cast<const std::uint8_t*>(message.data()),
                                                 static_cast<int>(message.size()));
    std::size_t count = 0;
    while (const std::uint32_t tag = input.ReadTag()) {
        count += WireFormatLite::GetTagFieldNumber(tag) == number;
        if (!WireFormatLite::SkipField(&input, tag))
            return std::nullopt;
    }
    return input.ConsumedEntireMessage() ? std::optional(count) : std::nullopt;
}

HRESULT GiveBytes(std::string_view bytes, VARIANT& target) {
    SAFEARRAY* array = platform::MakeByteArray(std::as_bytes(std::span(bytes)));
    if (!array)
        return E_OUTOFMEMORY;
    target = platform::CVariant::FromArray(array, VT_UI1).Detach();
    return S_OK;
}

std::optional<std::string_view> TakeBytes(const VARIANT& value) {
    if (value.vt != ByteArray || !value.parray)
        return std::nullopt;
    const auto bytes = platform::BytesOf(value.parray);
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

} // namespace IDM_dmudfcom
