// Runs a fuzz target without libFuzzer: first every file of the corpus folder named on the command line, then a
// fixed number of inputs made from them by a generator with a fixed seed, so that a failure comes back.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int RunCount = 100000;
constexpr std::size_t MaxSize = 4096;

// In name order, so that every machine makes the same inputs.
std::vector<Bytes> ReadCorpus(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Bytes> corpus;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        if (!file)
            throw std::filesystem::filesystem_error("cannot read", path, std::make_error_code(std::errc::io_error));
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return corpus;
}

class CInputs {
public:
    explicit CInputs(const std::vector<Bytes>& corpus) : m_Corpus(corpus) {}

    // Every fourth input is random from end to end, the others are changed in a few places.
    Bytes Next() {
        if (m_Corpus.empty() || Below(4) == 0)
            return RandomBytes(Below(64));
        Bytes bytes = m_Corpus[Below(m_Corpus.size())];
        for (std::size_t changes = 1 + Below(6); changes > 0; --changes)
            Change(bytes);
        return bytes;
    }

private:
    std::size_t Below(std::size_t limit) { return m_Random() % limit; }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(m_Random()); }

    Bytes RandomBytes(std::size_t size) {
        Bytes bytes(size);
        std::generate(bytes.begin(), bytes.end(), [this] { return Byte(); });
        return bytes;
    }

    void Change(Bytes& bytes) {
        const std::size_t at = Below(bytes.size() + 1);
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        switch (Below(5)) {
        case 0:
            bytes.resize(at);
            break;
        case 1:
            bytes.insert(place, Byte());
            break;
        case 2:
            Splice(bytes, at);
            break;
        case 3:
            if (place != bytes.end())
                bytes.erase(place);
            break;
        default:
            if (place != bytes.end())
                *place = Byte();
        }
    }

    // A piece of another file, or of the same one.
    void Splice(Bytes& bytes, std::size_t at) {
        const Bytes& source = m_Corpus[Below(m_Corpus.size())];
        const std::size_t begin = Below(source.size() + 1);
        const std::size_t size = Below(source.size() - begin + 1);
        if (bytes.size() + size <= MaxSize)
            bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         source.begin() + static_cast<std::ptrdiff_t>(begin),
                         source.begin() + static_cast<std::ptrdiff_t>(begin + size));
    }

    const std::vector<Bytes>& m_Corpus;
    std::mt19937 m_Random{1};
};

void Run(const Bytes& bytes) { LLVMFuzzerTestOneInput(bytes.data(), bytes.size()); }

} // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<Bytes> corpus = argc > 1 ? ReadCorpus(argv[1]) : std::vector<Bytes>();
        std::for_each(corpus.begin(), corpus.end(), Run);
        CInputs inputs(corpus);
        for (int i = 0; i < RunCount; ++i)
            Run(inputs.Next());
        std::printf("%zu files and %d inputs\n", corpus.size(), RunCount);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}
