#include "com/boundary.hpp"

#include <comdef.h>

#include <new>
#include <stdexcept>

namespace paylodge {

HRESULT CaughtHResult() noexcept {
    try {
        throw;
    } catch (const _com_error& error) {
        return error.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::length_error&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace paylodge
