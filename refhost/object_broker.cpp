#include "refhost/object_broker.hpp"

#include "refhost/boundary.hpp"
#include "refhost/call_record.hpp"
#include "refhost/fault_plan.hpp"
#include "refhost/request_processor.hpp"

namespace paylodge::refhost {

HRESULT CHostObjectBroker::CreateObjectFromClassId(BSTR class_id, IUnknown** object) {
    return Guarded([&]() -> HRESULT {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (const auto failure = Record(kCreateObjectCall, {Argument(class_id)})) {
            return *failure;
        }
        CLSID id = {};
        if (class_id == nullptr || FAILED(::CLSIDFromString(class_id, &id))) {
            return CO_E_CLASSSTRING;
        }
        if (!IsEqualCLSID(id, kRequestProcessorClass)) {
            return REGDB_E_CLASSNOTREG;
        }
        const auto processor = ComObject<CRequestProcessor>::Create();
        return processor ? processor->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(object)) : E_OUTOFMEMORY;
    });
}

}  // namespace paylodge::refhost
