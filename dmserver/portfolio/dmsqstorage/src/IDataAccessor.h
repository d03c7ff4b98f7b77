// What the expiration calculator and the holiday lookup see of the storage: eight reads and nothing else.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace sqStorage {

struct IDataAccessor {
    virtual void SelectPortfolio(LONG Mode, IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual void SelectDataFeed(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual LONG SelectRootSettings(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual LONG SelectExpirationRule(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual void SelectHoliday(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual void SelectHolidayDetails(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    virtual void SelectExchange(IDM_dmudfcom::IdmRequest* Request, IDM_dmudfcom::IdmTable* Table) = 0;
    // The key of the exchange of that name, or 0.
    virtual LONG SelectExchange(const wchar_t* ExchangeName) = 0;

protected:
    ~IDataAccessor() = default;
};

} // namespace sqStorage
