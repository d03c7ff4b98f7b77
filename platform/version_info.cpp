#include "platform/version_info.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/loaded_image.h"
#include "platform/text.h"
#include "platform/toml_text.h"
#include "platform/version_note.h"

namespace platform {

namespace {

constexpr WORD UsualLanguage = 0x0409;
constexpr WORD UsualCodePage = 0x04b0;

[[noreturn]] void ThrowLineError(const std::filesystem::path& file, std::size_t line, const std::string& what) {
    throw CVersionInfoError("version file \"" + file.native() + "\", line " + std::to_string(line) + ": " + what +
                            ". Give each value a line of the form CompanyName = \"...\"");
}

tagTranslation CheckedTranslation(const std::filesystem::path& file, std::size_t line, const std::string& text) {
    const auto translation = ParseTranslation(text);
    if (!translation)
        ThrowLineError(file, line, "Translation is not eight hexadecimal digits, such as \"040904b0\"");
    return *translation;
}

CVersionBlock ParseVersionFile(const std::filesystem::path& file, std::string_view text) {
    tagTranslation translation{UsualLanguage, UsualCodePage};
    CVersionBlock::Strings strings;
    try {
        for (const tagTomlValue& value : ParseToml(text).Values) {
            const auto* const content = std::get_if<std::string>(&value.Value);
            if (content == nullptr)
                ThrowLineError(file, value.Line, "the value of " + value.Name + " lacks its quotes");
            if (value.Name == "Translation")
                translation = CheckedTranslation(file, value.Line, *content);
            else
                strings.emplace(FromUtf8(value.Name), FromUtf8(*content));
        }
    } catch (const CTomlError& error) {
        ThrowLineError(file, error.Line(), error.what());
    }
    return {translation.Language, translation.CodePage, std::move(strings)};
}

std::optional<CVersionBlock> ReadVersionFile(const std::filesystem::path& file) {
    try {
        const auto text = ReadFileIfExists(file);
        return text ? std::optional(ParseVersionFile(file, *text)) : std::nullopt;
    } catch (const CFileError& error) {
        throw CVersionInfoError(std::string("version file: ") + error.what());
    }
}

std::optional<CVersionBlock> ReadNote(const CModule& module) {
    for (const tagNoteSegment& segment : FindNoteSegments(module)) {
        if (auto block = FindVersionNote(segment.Bytes, segment.Alignment))
            return block;
    }
    return std::nullopt;
}

std::optional<CVersionBlock> ReadFileOfEnvironment() {
    const auto name = GetEnvironment(L"SQSTORAGE_VERSION_INFO");
    if (!name || name->empty())
        return std::nullopt;
    auto block = ReadVersionFile(ToPath(*name));
    if (!block)
        throw CVersionInfoError("SQSTORAGE_VERSION_INFO names \"" + ToUtf8(*name) +
                                "\", which does not exist. Create that file or unset the variable");
    return block;
}

} // namespace

std::optional<std::wstring> CVersionBlock::Value(std::wstring_view name) const {
    const auto found = m_Strings.find(name);
    return found == m_Strings.end() ? std::nullopt : std::optional(found->second);
}

std::optional<CVersionBlock> ReadVersionBlock(const CModule* module) {
    const CModule executable = CModule::Executable();
    const CModule& image = module != nullptr ? *module : executable;
    if (auto block = ReadNote(image))
        return block;
    if (module == nullptr) {
        if (auto block = ReadFileOfEnvironment())
            return block;
    }
    return ReadVersionFile(ToPath(image.FileName() + L".version"));
}

} // namespace platform
