// The control's events.
#pragma once

#include <windows.h>

#include <initializer_list>

#include "control/connection_points.hpp"
#include "paylodge.h"

namespace paylodge {

// The events of _IPaylodgeCtrlEvents by their dispatch ids.
enum class ControlEvent : DISPID {
    kTransactionChanged = 1,
    kReconBatchData = 2,
    kReconFeeData = 3,
    kReconPaymentData = 4,
    kTransactionID = 5,
    kEInvoicedTransactionData = 6,
    kOnProcessLHRequest = 7,
    kCustomerListData = 8,
    kItemListData = 9,
    kCustomerData = 10,
    kCustomerSearchResult = 11,
    kLineItemsSearchResult = 12,
};

// Raises an event on the sinks of one control, whose arguments stand in the event's own order. Gives the code of the
// last sink that was called, S_OK without sinks. Raises E_OUTOFMEMORY.
inline HRESULT Fire(ConnectionPoint& sinks, ControlEvent event, std::initializer_list<EventArgument> arguments) {
    return RaiseEvent(sinks, static_cast<DISPID>(event), arguments);
}

// The connection point for sinks of the control's events.
template <class Class>
class CProxy_IPaylodgeCtrlEvents : public IConnectionPointImpl<Class, &DIID__IPaylodgeCtrlEvents> {};

}  // namespace paylodge
