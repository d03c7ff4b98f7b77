// Prepared statements that wait for their next use. Preparing costs several times what running does.
#pragma once

#include "PreparedStatement.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace IDM_dmFirebird {

// A statement is lent out whole: while one user has it another one prepares his own. Any thread may call.
class CStatementCache {
public:
    static constexpr std::size_t Capacity = 64;

    // Null when none with this text is idle.
    std::unique_ptr<CPreparedStatement> Take(std::wstring_view text);
    // `generation` is that of the moment when the statement was taken or prepared. Keeps what is worth it; when
    // full, what was used longest ago makes room.
    void GiveBack(std::unique_ptr<CPreparedStatement> statement, std::uint64_t generation);
    // Lets go of all, and of those that are lent out as soon as they come back. An idle statement keeps the
    // engine from changing the tables that it names.
    void Drop();

    std::uint64_t Generation() const;
    std::size_t IdleCount() const;

private:
    struct tagEntry {
        std::size_t Hash;
        std::uint64_t LastUse;
        std::unique_ptr<CPreparedStatement> Statement;
    };

    std::unique_ptr<CPreparedStatement> Put(std::unique_ptr<CPreparedStatement> statement);

    mutable std::mutex m_Mutex;
    std::vector<tagEntry> m_Idle;
    std::uint64_t m_Clock = 0;
    std::uint64_t m_Generation = 0;
};

} // namespace IDM_dmFirebird
