#include "platform/registry_file.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/known_folder.h"
#include "platform/text.h"
#include "platform/toml_text.h"

#include <array>
#include <map>
#include <mutex>

namespace platform {

namespace {

using Tree = std::shared_ptr<const CRegistryTree>;

constexpr std::size_t RootCount = 3;
constexpr std::array<std::wstring_view, RootCount> FileNames{L"machine.toml", L"user.toml", L"classes.toml"};

std::filesystem::path RegistryFile(ERegistryRoot root) {
    return ToPath(RegistryDirectory()) / ToPath(FileNames.at(static_cast<std::size_t>(root)));
}

[[noreturn]] void ThrowRegistryError(const std::filesystem::path& file, std::size_t line, const std::string& what) {
    const std::wstring name = FromPath(file);
    std::string text = "registry file \"" + ToUtf8(name) + "\"";
    if (line > 0)
        text += ", line " + std::to_string(line);
    throw CRegistryError(text + ": " + what, name, line);
}

CRegistryTree ParseFile(const std::filesystem::path& file, const std::string& bytes) {
    constexpr auto advice = ". Correct the line, or move the file away to start with an empty one";
    try {
        return CRegistryTree::Parse(bytes);
    } catch (const CTomlError& error) {
        ThrowRegistryError(file, error.Line(), error.what() + std::string(advice));
    } catch (const CTextError& error) {
        ThrowRegistryError(file, 0, error.what() + std::string(advice));
    }
}

// What was parsed last from each file, as long as the file stays the same.
class CTreeCache {
public:
    [[nodiscard]] Tree Find(const std::filesystem::path& file, const tagFileStamp& stamp) {
        const std::lock_guard lock(m_Mutex);
        const auto found = m_Trees.find(file);
        return found != m_Trees.end() && found->second.Stamp == stamp ? found->second.Content : nullptr;
    }
    void Keep(const std::filesystem::path& file, const tagFileStamp& stamp, Tree content) {
        const std::lock_guard lock(m_Mutex);
        if (m_Trees.size() > MostFiles)
            m_Trees.clear();
        m_Trees.insert_or_assign(file, tagEntry{stamp, std::move(content)});
    }

private:
    // One process sees three files; only tests move the directory again and again.
    static constexpr std::size_t MostFiles = 30;
    struct tagEntry {
        tagFileStamp Stamp;
        Tree Content;
    };

    std::mutex m_Mutex;
    std::map<std::filesystem::path, tagEntry> m_Trees; // guarded by m_Mutex
};

CTreeCache& Cache() {
    // Left alive at the end of the process: threads may still read.
    static CTreeCache& cache = *std::make_unique<CTreeCache>().release();
    return cache;
}

Tree ReadTree(const std::filesystem::path& file) {
    try {
        const auto stamp = GetFileStamp(file);
        if (Tree known = stamp ? Cache().Find(file, *stamp) : nullptr)
            return known;
        const auto read = ReadStampedFileIfExists(file);
        if (!read)
            return std::make_shared<CRegistryTree>();
        auto tree = std::make_shared<const CRegistryTree>(ParseFile(file, read->Bytes));
        Cache().Keep(file, read->Stamp, tree);
        return tree;
    } catch (const CFileError& error) {
        ThrowRegistryError(file, 0,
                           std::string(error.what()) +
                               ". Let this user read it, or name another directory in SQSTORAGE_REGISTRY_DIR");
    }
}

[[noreturn]] void ThrowNotWritable(const std::filesystem::path& file, const CFileError& error) {
    ThrowRegistryError(file, 0,
                       std::string(error.what()) +
                           ". Let this user write to the directory, or name another in SQSTORAGE_REGISTRY_DIR");
}

CFileLock LockFile(const std::filesystem::path& file) {
    try {
        CreateDirectories(file.parent_path(), EAccess::Private);
        auto name = file;
        return CFileLock(name += ".lock");
    } catch (const CFileError& error) {
        ThrowNotWritable(file, error);
    }
}

// To be called under the file's lock.
void WriteTree(const std::filesystem::path& file, const CRegistryTree& tree) {
    const std::string bytes = tree.Format();
    try {
        WriteFileAtomically(file, bytes, EAccess::Private);
    } catch (const CFileError& error) {
        ThrowNotWritable(file, error);
    }
}

struct tagBatch {
    explicit tagBatch(const std::filesystem::path& file)
        : File(file), Lock(LockFile(file)), Content(std::make_shared<CRegistryTree>(*ReadTree(file))) {}

    std::filesystem::path File;
    CFileLock Lock;
    std::shared_ptr<CRegistryTree> Content;
    bool Changed = false;
};

std::unique_ptr<tagBatch>& BatchOf(ERegistryRoot root) {
    thread_local std::array<std::unique_ptr<tagBatch>, RootCount> batches;
    return batches.at(static_cast<std::size_t>(root));
}

} // namespace

std::wstring RegistryDirectory() {
    const auto chosen = GetEnvironment(L"SQSTORAGE_REGISTRY_DIR");
    if (chosen && !chosen->empty())
        return *chosen;
    const auto settings = GetKnownFolder(EKnownFolder::AppData);
    if (!settings)
        throw CRegistryError("there is no place for the registry: this user has no home directory. Name a "
                             "directory in SQSTORAGE_REGISTRY_DIR",
                             L"", 0);
    return *settings + L"/sqstorage/registry";
}

std::shared_ptr<const CRegistryTree> ReadRegistry(ERegistryRoot root) {
    if (const auto& batch = BatchOf(root))
        return batch->Content;
    return ReadTree(RegistryFile(root));
}

bool ChangeRegistry(ERegistryRoot root, const std::function<bool(CRegistryTree&)>& change) {
    if (const auto& batch = BatchOf(root)) {
        const bool changed = change(*batch->Content);
        batch->Changed |= changed;
        return changed;
    }
    const std::filesystem::path file = RegistryFile(root);
    // What changes nothing must not need the right to write.
    if (CRegistryTree trial = *ReadTree(file); !change(trial))
        return false;
    const CFileLock lock = LockFile(file);
    CRegistryTree tree = *ReadTree(file);
    if (!change(tree))
        return false;
    WriteTree(file, tree);
    return true;
}

bool BeginRegistryBatch(ERegistryRoot root) {
    auto& batch = BatchOf(root);
    if (batch)
        return false;
    batch = std::make_unique<tagBatch>(RegistryFile(root));
    return true;
}

void CommitRegistryBatch(ERegistryRoot root) {
    const auto& batch = BatchOf(root);
    if (batch && batch->Changed) {
        WriteTree(batch->File, *batch->Content);
        batch->Changed = false;
    }
}

void EndRegistryBatch(ERegistryRoot root) noexcept { BatchOf(root).reset(); }

} // namespace platform
