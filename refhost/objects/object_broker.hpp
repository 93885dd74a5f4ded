// The host's object broker: creates the host's objects for those who know a class id.
#pragma once

#include "com/class_object.hpp"
#include "hostapi/request_processor.hpp"
#include "refhost/objects/undispatched.hpp"

namespace paylodge::refhost {

class CHostObjectBroker : public Undispatched<IHostObjectBroker>,
                          public CComCoClass<CHostObjectBroker, &kHostObjectBrokerClass> {
  public:
    using Row = InterfaceRow<CHostObjectBroker>;
    static constexpr std::array kInterfaces = {Row::Of<IHostObjectBroker>(), Row::Of<IDispatch, IHostObjectBroker>()};

    // E_POINTER without a slot, CO_E_CLASSSTRING for text that is no class id, REGDB_E_CLASSNOTREG for other classes.
    STDMETHODIMP CreateObjectFromClassId(BSTR class_id, IUnknown** object) override;

  protected:
    ~CHostObjectBroker() = default;
};

}  // namespace paylodge::refhost
