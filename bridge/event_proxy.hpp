// The control's events.
#pragma once

#include <windows.h>

#include <initializer_list>

#include "control/connection_points.hpp"
#include "idl/event_ids.h"
#include "paylodge.h"

namespace paylodge {

// The events of _IPaylodgeCtrlEvents by their dispatch ids.
enum class ControlEvent : DISPID {
    kTransactionChanged = DISPID_TRANSACTION_CHANGED,
    kReconBatchData = DISPID_RECON_BATCH_DATA,
    kReconFeeData = DISPID_RECON_FEE_DATA,
    kReconPaymentData = DISPID_RECON_PAYMENT_DATA,
    kTransactionID = DISPID_TRANSACTION_ID,
    kEInvoicedTransactionData = DISPID_EINVOICED_TRANSACTION_DATA,
    kOnProcessLHRequest = DISPID_ON_PROCESS_LH_REQUEST,
    kCustomerListData = DISPID_CUSTOMER_LIST_DATA,
    kItemListData = DISPID_ITEM_LIST_DATA,
    kCustomerData = DISPID_CUSTOMER_DATA,
    kCustomerSearchResult = DISPID_CUSTOMER_SEARCH_RESULT,
    kLineItemsSearchResult = DISPID_LINE_ITEMS_SEARCH_RESULT,
};

// Raises an event on the sinks of one control, whose arguments stand in the event's own order. Returns the
// HRESULT of the last sink that was called, S_OK without sinks. Throws E_OUTOFMEMORY.
inline HRESULT Fire(ConnectionPoint& sinks, ControlEvent event, std::initializer_list<EventArgument> arguments) {
    return RaiseEvent(sinks, static_cast<DISPID>(event), arguments);
}

// The connection point for sinks of the control's events.
template <class Class>
class CProxy_IPaylodgeCtrlEvents : public IConnectionPointImpl<Class, &DIID__IPaylodgeCtrlEvents> {};

}  // namespace paylodge
