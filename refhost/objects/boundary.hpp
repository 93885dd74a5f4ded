// The boundary to callers of the host's objects: no C++ exception crosses it.
#pragma once

#include <windows.h>

#include <comdef.h>
#include <oleauto.h>

#include <new>
#include <utility>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/object_root.hpp"
#include "refhost/books/status.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {

// Leaves the message where scripts find the description of an error. Answers E_FAIL.
inline HRESULT Report(const std::string& message) {
    ComPtr<ICreateErrorInfo> creation;
    ComPtr<IErrorInfo> info;
    std::wstring text = WideFromUtf8(message);
    if (SUCCEEDED(::CreateErrorInfo(creation.Receive())) && SUCCEEDED(creation->SetDescription(text.data())) &&
        SUCCEEDED(creation->QueryInterface(IID_IErrorInfo, info.ReceiveVoid()))) {
        ::SetErrorInfo(0, info.Get());
    }
    return E_FAIL;
}

// What the work answers, or the HRESULT for what it raises.
template <class Work>
[[nodiscard]] HRESULT Guarded(const Work& work) noexcept {
    try {
        return work();
    } catch (const HostError& error) {
        return Report(error.what());
    } catch (const _com_error& error) {
        return error.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

// Stores a new string for the caller. E_POINTER without a slot.
[[nodiscard]] inline HRESULT Return(std::wstring_view text, BSTR* result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = MakeBstr(text).Detach();
    return S_OK;
}

// Hands a new object of a class to the caller. E_OUTOFMEMORY.
template <class Class, class Interface, class... Arguments>
[[nodiscard]] HRESULT Return(Interface** result, Arguments&&... arguments) {
    auto object = ComObject<Class>::Create(std::forward<Arguments>(arguments)...);
    if (!object) {
        return E_OUTOFMEMORY;
    }
    *result = object.Detach();
    return S_OK;
}

}  // namespace paylodge::refhost
