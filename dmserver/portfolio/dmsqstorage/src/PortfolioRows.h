// The join: completes the rows of the portfolio from what was read of exchanges, data feeds, settings and sessions.
//
// Rows are taken a block at a time, so that each column is read and written in one piece; what a reader sees is the
// same as if each row were completed before the next one.
#pragma once

#include "SelectPortfolioImpl.h"

#include <array>
#include <memory>

namespace select_portfolio_impl {

// The last entry is at hand: symbols that stand together by name mostly share what they refer to.
template <class T>
class CLastEntry {
public:
    explicit CLastEntry(const std::map<LONG, T>& map) : m_Map(map) {}

    const T& Get(LONG id) {
        if (!m_Entry || m_Id != id) {
            m_Entry = &_get_impl(m_Map, id);
            m_Id = id;
        }
        return *m_Entry;
    }

private:
    const std::map<LONG, T>& m_Map;
    LONG m_Id = 0;
    const T* m_Entry = nullptr;
};

class CPortfolioRows {
public:
    // The table has all fields of the portfolio. It and the maps outlive the object.
    CPortfolioRows(IDM_dmudfcom::ITableRows& table, const Exchanges& exchanges, const DataFeeds& dataFeeds,
                   const Settings& settings, const Sessions& sessions);

    // From the first record to the last; the first row that refers to nothing ends the walk by an exception.
    void CompleteAll();

private:
    static constexpr ULONG BlockRows = 256;
    template <class T>
    using Cells = std::array<T, BlockRows>;

    struct tagStored {
        Cells<LONG> Exchange;
        Cells<LONG> DataFeed;
        Cells<LONG> SettingType;
        Cells<LONG> Setting;
        Cells<LONG> SessionType;
        Cells<LONG> CustomSession;
        Cells<LONG> TemplateSession;
    };
    struct tagComputed {
        Cells<LONG> LocalGmt;
        Cells<const tagSharedText*> DataFeedName;
        Cells<const tagSharedText*> ExchangeName;
        Cells<const tagSharedText*> ExchangeZone;
        Cells<LONG> Setting;
        Cells<LONG> PriceScale;
        Cells<double> PointValue;
        Cells<LONG> DailyLimit;
        Cells<double> MinMovement;
        Cells<const tagSharedText*> SessionsString;
        Cells<const tagSharedText*> SessionsZone;
        Cells<LONG> ExchangeGmt;
    };
    struct tagBlock {
        tagStored Stored;
        tagComputed Computed;
    };
    struct tagColumns {
        ULONG Exchange;
        ULONG DataFeed;
        ULONG DataFeedName;
        ULONG ExchangeName;
        ULONG ExchangeZone;
        ULONG SettingType;
        ULONG Setting;
        ULONG CustomSetting;
        ULONG SessionType;
        ULONG CustomSession;
        ULONG TemplateSession;
        ULONG PriceScale;
        ULONG PointValue;
        ULONG DailyLimit;
        ULONG MinMovement;
        ULONG SessionsString;
        ULONG SessionsZone;
        ULONG ExchangeGmt;
        ULONG LocalGmt;
    };

    static tagColumns FindColumns(const IDM_dmudfcom::ITableRows& table);
    void CompleteBlock(ULONG first, ULONG count);
    void Read(ULONG first, ULONG count);
    void Complete(ULONG row);
    void Write(ULONG first, ULONG count);
    void WriteCustomSetting(ULONG first, ULONG count);
    const tagSharedText& SessionsStringOf(const tagSession& session) const;
    const tagSharedText& SessionsZoneOf(const tagSession& session, const tagExchange& exchange) const;

    IDM_dmudfcom::ITableRows& m_Table;
    const tagColumns m_Columns;
    CLastEntry<tagExchange> m_Exchange;
    CLastEntry<tagDataFeed> m_DataFeed;
    CLastEntry<tagSetting> m_Setting;
    CLastEntry<tagSession> m_Session;
    LONG m_LocalGmt;
    tagSharedText m_LocalZone;
    tagSharedText m_Gmt;
    const tagSharedText m_NoZone;
    const std::unique_ptr<tagBlock> m_Block = std::make_unique<tagBlock>();
};

} // namespace select_portfolio_impl
