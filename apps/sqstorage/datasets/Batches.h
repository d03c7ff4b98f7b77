// Rows that are handed on a batch at a time, because all of them are too many to be held.
#pragma once

#include "Dataset.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace sqCli {

class CBatches {
public:
    CBatches(std::vector<std::string> columns, const TakeRows& take)
        : m_Batch{std::move(columns), {}}, m_Take(take) {}

    void Add(std::vector<Cell> row) {
        m_Batch.Rows.push_back(std::move(row));
        if (m_Batch.Rows.size() == Size)
            HandOn();
    }
    // What there is by now.
    void Flush() {
        if (!m_Batch.Rows.empty())
            HandOn();
    }
    // One batch comes in any case, for the columns.
    void Finish() {
        if (!m_Batch.Rows.empty() || !m_HasBatch)
            HandOn();
    }

private:
    void HandOn() {
        m_Take(m_Batch);
        m_Batch.Rows.clear();
        m_HasBatch = true;
    }

    static constexpr std::size_t Size = 500;

    tagRowSet m_Batch;
    const TakeRows& m_Take;
    bool m_HasBatch = false;
};

} // namespace sqCli
