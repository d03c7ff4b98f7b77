#include "TableFixture.h"

namespace dmudfcom_tests {

TEST_F(TableTest, AppendPutPostMakesARecordThatTheWalkFinds) {
    ASSERT_EQ(m_Table->AddFieldById(fieldSymbol, 0, 0, 0), S_OK);
    const auto symbol = FieldOf(*m_Table, fieldSymbol);
    AppendLong(*symbol, 5);
    AppendLong(*symbol, 7);
    EXPECT_EQ(Walk(*symbol), (std::vector<LONG>{5, 7}));
    EXPECT_EQ(Get(*m_Table, &IdmTable::get_RecordCount), 2);
}

} // namespace dmudfcom_tests
