#include "refhost/objects/object_broker.hpp"

#include "refhost/control/call_record.hpp"
#include "refhost/control/fault_plan.hpp"
#include "refhost/objects/processor_object.hpp"

namespace paylodge::refhost {

HRESULT CHostObjectBroker::CreateObjectFromClassId(BSTR class_id, IUnknown** object) {
    const auto create = [&]() -> HRESULT {
        CLSID id = {};
        if (class_id == nullptr || FAILED(::CLSIDFromString(class_id, &id))) {
            return CO_E_CLASSSTRING;
        }
        return IsEqualCLSID(id, kRequestProcessorClass) ? Return<CRequestProcessor>(object) : REGDB_E_CLASSNOTREG;
    };
    return ServeResult(kCreateObjectCall, object, create, class_id);
}

}  // namespace paylodge::refhost
