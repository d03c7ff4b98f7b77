#include "NameKeys.h"

#include <fmt/format.h>

namespace sqCli {

std::optional<std::string> CNameKeys::Problem(const tagImportRun& run, const std::string& name) const {
    const std::string id = IdOf(name);
    const auto found = m_Keys.find(id);
    if (found == m_Keys.end() && !run.IsPlanned(m_Dataset, id))
        return fmt::format("there is no {} \"{}\": correct the name, or add it to {}.csv", m_Noun, name, m_Dataset);
    if (found != m_Keys.end() && found->second.size() > 1)
        return fmt::format("the store has {} {}s \"{}\": rename all but one of them", found->second.size(), m_Noun,
                           name);
    return std::nullopt;
}

LONG CNameKeys::KeyOf(const std::string& name) const {
    const auto found = m_Keys.find(IdOf(name));
    return found == m_Keys.end() ? 0 : found->second.front();
}

} // namespace sqCli
