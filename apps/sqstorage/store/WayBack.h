// A change that takes the store several steps, and what undoes it when the store refuses one.
//
// Errors: the CStoreRefusal of the change. When the store refuses the way back, too, it says so besides.
#pragma once

#include "Store.h"

#include <fmt/format.h>
#include <string_view>

namespace sqCli {

// `what` is what the way back restores: "its old prices".
template <class Change, class Undo>
void ChangeOrUndo(const Change& change, const Undo& undo, std::string_view what) {
    try {
        change();
    } catch (const CStoreRefusal& refusal) {
        try {
            undo();
        } catch (const CStoreRefusal&) {
            throw CStoreRefusal(
                fmt::format("{} And {} could not be put back: import them again.", refusal.what(), what));
        }
        throw;
    }
}

} // namespace sqCli
