#include "TextPool.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace IDM_dmudfcom {

namespace {

constexpr std::size_t MaxLengthSize = 10;
constexpr std::size_t FirstBytes = 64;  // of the first block, at its smallest
constexpr std::size_t KeptBytes = 1024; // of a first block that a cleared pool keeps

// Seven bits a byte, the lowest first.
std::size_t WriteLength(char* target, std::size_t length) {
    std::size_t size = 0;
    for (; length >= 0x80; length >>= 7)
        target[size++] = static_cast<char>(length | 0x80);
    target[size++] = static_cast<char>(length);
    return size;
}

std::uint64_t LoadUpTo8(const char* data, std::size_t size) {
    std::uint64_t value = 0;
    std::memcpy(&value, data, size);
    return value;
}

template <class T>
bool IsSameAt(const char* left, const char* right) {
    T leftValue;
    T rightValue;
    std::memcpy(&leftValue, left, sizeof(T));
    std::memcpy(&rightValue, right, sizeof(T));
    return leftValue == rightValue;
}

// Two halves that may overlap.
template <class Half>
void CopyHalves(char* target, const char* source, std::size_t size) {
    Half first;
    Half last;
    std::memcpy(&first, source, sizeof first);
    std::memcpy(&last, source + size - sizeof last, sizeof last);
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + size - sizeof last, &last, sizeof last);
}

// Without a call for texts of up to 32 bytes, which most are.
void CopyText(char* target, std::string_view text) {
    struct tagHalf {
        std::uint64_t Bytes[2];
    };
    const std::size_t size = text.size();
    if (size >= sizeof(tagHalf) && size <= 2 * sizeof(tagHalf))
        return CopyHalves<tagHalf>(target, text.data(), size);
    if (size >= 8 && size < sizeof(tagHalf))
        return CopyHalves<std::uint64_t>(target, text.data(), size);
    if (size >= 4 && size < 8)
        return CopyHalves<std::uint32_t>(target, text.data(), size);
    std::memcpy(target, text.data(), size);
}

// Without a call for texts of up to sixteen bytes, and for most that differ. Not for empty ones.
bool IsSame(std::string_view left, std::string_view right) {
    const std::size_t size = left.size();
    if (size != right.size() || left.back() != right.back())
        return false;
    const char* const l = left.data();
    const char* const r = right.data();
    if (size >= 8) {
        using Half = std::uint64_t;
        const std::size_t last = size - sizeof(Half);
        return IsSameAt<Half>(l, r) && IsSameAt<Half>(l + last, r + last) &&
               (size <= 2 * sizeof(Half) || std::memcmp(l, r, size) == 0);
    }
    if (size >= 4)
        return IsSameAt<std::uint32_t>(l, r) && IsSameAt<std::uint32_t>(l + size - 4, r + size - 4);
    return l[0] == r[0] && l[size / 2] == r[size / 2];
}

// Short texts are the rule: eight bytes a step.
std::size_t HashOf(std::string_view text) {
    std::uint64_t hash = text.size() * 0x9E3779B97F4A7C15U;
    const auto mix = [&hash](std::uint64_t value) {
        hash = (hash ^ value) * 0xFF51AFD7ED558CCDU;
        hash ^= hash >> 32;
    };
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t value;
        std::memcpy(&value, text.data() + i, 8);
        mix(value);
    }
    if (i < text.size())
        mix(LoadUpTo8(text.data() + i, text.size() - i));
    return static_cast<std::size_t>(hash);
}

} // namespace

CTextPool::CTextPool() {
    static std::atomic<std::uint64_t> last{0};
    m_Id = last.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::string_view CTextPool::LongTextAt(const char* data) {
    std::size_t length = static_cast<unsigned char>(*data++) & 0x7FU;
    for (unsigned shift = 7;; shift += 7) {
        const auto byte = static_cast<unsigned char>(*data++);
        length |= std::size_t{byte & 0x7FU} << shift;
        if (byte < LongLength)
            return {data, length};
    }
}

inline CTextPool::Handle CTextPool::Append(std::string_view text) {
    const std::size_t size = text.size() + 1;
    if (text.size() >= LongLength || size > m_Left) [[unlikely]]
        return AppendElsewhere(text);
    *m_Next = static_cast<char>(text.size());
    CopyText(m_Next + 1, text);
    const auto handle = static_cast<Handle>(m_End);
    m_End += size;
    m_Next += size;
    m_Left -= size;
    return handle;
}

CTextPool::Handle CTextPool::Add(std::string_view text, std::uint32_t cells) {
    if (text.empty())
        return 0;
    if (m_Last != 0 && IsSame(At(m_Last), text))
        return m_Last;
    m_Last = m_IsInterning ? Intern(text, cells) : Append(text);
    return m_Last;
}

// What the dictionary needs of memory it takes before the text is stored: a text is in both or in neither.
CTextPool::Handle CTextPool::Intern(std::string_view text, std::uint32_t cells) {
    m_Added += cells;
    if (m_Slots.empty()) {
        const auto found = std::ranges::find_if(m_Handles, [&](Handle handle) { return IsSame(At(handle), text); });
        if (found != m_Handles.end())
            return *found;
        if (m_Distinct + 1 < DictionaryFrom) {
            m_Handles.reserve(DictionaryFrom);
            m_Handles.push_back(Append(text));
            ++m_Distinct;
            return m_Handles.back();
        }
        BeginDictionary();
    }
    std::size_t slot = SlotOf(text);
    if (m_Slots[slot] != 0)
        return m_Slots[slot];
    if ((m_Distinct + 1) * 2 > m_Slots.size()) {
        Rehash(m_Slots.size() * 2);
        slot = SlotOf(text);
    }
    const Handle handle = Append(text);
    m_Slots[slot] = handle;
    ++m_Distinct;
    if (!IsDictionaryWorthIt()) {
        m_IsInterning = false;
        m_Slots = std::vector<Handle>(); // {} would keep the memory
    }
    return handle;
}

void CTextPool::BeginDictionary() {
    Rehash(FirstSlots);
    std::ranges::for_each(m_Handles, [this](Handle each) { Insert(each); });
    m_Handles = std::vector<Handle>();
}

// Most columns are clear cases: a name is another one in each row, an exchange one of a few.
bool CTextPool::IsDictionaryWorthIt() const {
    if (m_Added == FirstJudged && m_Distinct == m_Added)
        return false;
    return m_Added < JudgedFrom || m_Distinct <= m_Added / 2;
}

std::size_t CTextPool::SlotOf(std::string_view text) const {
    const std::size_t mask = m_Slots.size() - 1;
    std::size_t slot = HashOf(text) & mask;
    while (m_Slots[slot] != 0 && !IsSame(At(m_Slots[slot]), text))
        slot = (slot + 1) & mask;
    return slot;
}

void CTextPool::Insert(Handle handle) { m_Slots[SlotOf(At(handle))] = handle; }

void CTextPool::Rehash(std::size_t slots) {
    const std::vector<Handle> old = std::exchange(m_Slots, std::vector<Handle>(slots));
    for (const Handle handle : old)
        if (handle != 0)
            Insert(handle);
}

CTextPool::Handle CTextPool::AppendElsewhere(std::string_view text) {
    char length[MaxLengthSize];
    const std::size_t lengthSize = WriteLength(length, text.size());
    std::unique_ptr<char[]> retired; // `text` may lie in it
    char* target = Room(lengthSize + text.size(), retired);
    std::memcpy(target, length, lengthSize);
    std::memcpy(target + lengthSize, text.data(), text.size());
    const auto handle = static_cast<Handle>(m_End);
    m_End += lengthSize + text.size();
    const std::size_t block = m_End >> BlockShift;
    const std::size_t inBlock = m_End & (BlockSize - 1);
    m_Left = inBlock == 0 ? 0 : (block == 0 ? m_Blocks[0].Size : BlockSize) - inBlock;
    m_Next = m_Left == 0 ? nullptr : m_Blocks[block].Data + inBlock;
    return handle;
}

// Moves m_End to where `size` bytes fit in one piece. What is left of a block is given up.
char* CTextPool::Room(std::size_t size, std::unique_ptr<char[]>& retired) {
    const std::size_t inBlock = m_End & (BlockSize - 1);
    const std::size_t block = m_End >> BlockShift;
    if (block == 0 && std::max<std::size_t>(inBlock, 1) + size <= BlockSize) {
        retired = GrowFirstBlock(std::max<std::size_t>(inBlock, 1) + size);
        m_End = std::max<std::size_t>(inBlock, 1); // handle 0 is the empty text's
        return m_Blocks[0].Data + m_End;
    }
    if (block < m_Blocks.size() && inBlock != 0 && inBlock + size <= BlockSize)
        return m_Blocks[block].Data + inBlock;
    if (m_Blocks.empty())
        m_Blocks.emplace_back();
    const std::size_t blocks = (size + BlockSize - 1) >> BlockShift;
    const std::size_t begin = m_Blocks.size() << BlockShift;
    if (begin + (blocks << BlockShift) > std::numeric_limits<Handle>::max())
        throw std::length_error("a text column is full: its texts have 4 GB together");
    const std::size_t bytes = blocks << BlockShift;
    auto owner = std::make_unique_for_overwrite<char[]>(bytes);
    char* data = owner.get();
    for (std::size_t i = 0; i < blocks; ++i)
        m_Blocks.push_back({data + (i << BlockShift), nullptr, 0});
    m_Blocks[begin >> BlockShift].Owner = std::move(owner);
    m_Blocks[begin >> BlockShift].Size = bytes;
    m_End = begin;
    return data;
}

std::unique_ptr<char[]> CTextPool::GrowFirstBlock(std::size_t needed) {
    if (m_Blocks.empty())
        m_Blocks.emplace_back();
    tagBlock& first = m_Blocks.front();
    if (needed <= first.Size)
        return nullptr;
    const std::size_t size = std::min(BlockSize, std::bit_ceil(std::max({needed, 4 * first.Size, FirstBytes})));
    auto grown = std::make_unique_for_overwrite<char[]>(size);
    if (first.Size != 0)
        std::memcpy(grown.get(), first.Data, first.Size);
    first.Data = grown.get();
    first.Size = size;
    std::swap(first.Owner, grown);
    return grown;
}

void CTextPool::Clear() {
    CTextPool emptied;
    if (m_Blocks.size() == 1 && m_Blocks.front().Size <= KeptBytes)
        emptied.m_Blocks = std::move(m_Blocks);
    m_Handles.clear();
    emptied.m_Handles = std::move(m_Handles);
    *this = std::move(emptied);
}

std::size_t CTextPool::MemoryUse() const {
    std::size_t size = m_Blocks.capacity() * sizeof(tagBlock) + m_Handles.capacity() * sizeof(Handle) +
                       m_Slots.capacity() * sizeof(Handle);
    for (const tagBlock& block : m_Blocks)
        size += block.Size;
    return size;
}

} // namespace IDM_dmudfcom
