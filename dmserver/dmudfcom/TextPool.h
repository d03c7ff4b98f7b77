// The texts of one column, each reached by a 32-bit handle.
//
// Texts lie one after another in blocks, each behind its length. A text that the pool has already is not stored
// again: always when it repeats the one before it, and through a dictionary for as long as that pays. A column of
// mostly distinct texts loses its dictionary, and handles given out stay good.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace IDM_dmudfcom {

class CTextPool {
public:
    using Handle = std::uint32_t;

    CTextPool();

    // No two pools of a process have the same, and an emptied one has a new one.
    std::uint64_t Id() const { return m_Id; }

    // The handle of the empty text is 0 and costs nothing. Throws std::length_error when the pool holds 4 GB. A
    // text that comes for many cells at once counts as often when it is judged whether a dictionary pays.
    Handle Add(std::string_view text, std::uint32_t cells = 1);
    // Good until the next Add.
    std::string_view At(Handle handle) const {
        if (handle == 0)
            return {};
        const char* const data = m_Blocks[handle >> BlockShift].Data + (handle & (BlockSize - 1));
        const auto length = static_cast<unsigned char>(*data);
        return length < LongLength ? std::string_view(data + 1, length) : LongTextAt(data);
    }

    // Keeps the memory of a few texts for the next ones.
    void Clear();
    // Bytes of texts with their lengths, and bytes taken from the heap.
    std::size_t Bytes() const { return m_End; }
    std::size_t MemoryUse() const;
    bool HasDictionary() const { return !m_Slots.empty(); }

private:
    static constexpr unsigned BlockShift = 14;
    static constexpr std::size_t BlockSize = std::size_t{1} << BlockShift;
    static constexpr std::uint32_t DictionaryFrom = 16; // texts
    static constexpr std::uint32_t JudgedFrom = 256;    // texts
    static constexpr std::uint32_t FirstJudged = 128;   // texts, when no two of them are the same
    // Distinct texts, which lose their dictionary when they are first judged, have not grown it till then.
    static constexpr std::size_t FirstSlots = 2 * FirstJudged;
    static constexpr unsigned char LongLength = 0x80; // a length that takes more than a byte

    static std::string_view LongTextAt(const char* data);
    bool IsDictionaryWorthIt() const;
    Handle Append(std::string_view text);
    Handle AppendElsewhere(std::string_view text);
    char* Room(std::size_t size, std::unique_ptr<char[]>& retired);
    std::unique_ptr<char[]> GrowFirstBlock(std::size_t needed);
    Handle Intern(std::string_view text, std::uint32_t cells);
    void BeginDictionary();
    void Insert(Handle handle);
    void Rehash(std::size_t slots);
    // Where the text is, or where it would go.
    std::size_t SlotOf(std::string_view text) const;

    struct tagBlock {
        char* Data = nullptr;          // a text longer than a block runs through several
        std::unique_ptr<char[]> Owner; // null where the block before owns this one's bytes
        std::size_t Size = 0;
    };
    std::uint64_t m_Id;
    std::vector<tagBlock> m_Blocks;
    std::size_t m_End = 0;  // where the next text goes
    char* m_Next = nullptr; // the same, in memory,
    std::size_t m_Left = 0; // and how many bytes there are
    Handle m_Last = 0;

    std::vector<Handle> m_Handles; // the few texts from before there is a dictionary
    std::vector<Handle> m_Slots;   // open addressing; 0 is a free slot
    std::uint32_t m_Distinct = 0;
    std::uint32_t m_Added = 0;
    bool m_IsInterning = true;
};

} // namespace IDM_dmudfcom
