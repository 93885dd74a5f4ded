// The boundary to callers of the host's objects: no C++ exception crosses it.
#pragma once

#include <windows.h>

#include <comdef.h>
#include <oleauto.h>

#include <algorithm>
#include <array>
#include <new>
#include <string>
#include <utility>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/object_root.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {

// Each problem of the company file has an HRESULT of its own, so that a caller's log leads to the cause.
struct ProblemResult {
    Problem problem;
    HRESULT result;
};
inline constexpr HRESULT kNoCompanyOpen = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0421);
inline constexpr HRESULT kNewerCompanyFile = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0422);
inline constexpr HRESULT kForeignCompanyFile = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0423);
inline constexpr HRESULT kOtherCompanyOpen = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0424);
inline constexpr std::array kProblemResults{
    ProblemResult{Problem::kOtherFileOpen, kOtherCompanyOpen},
    ProblemResult{Problem::kNoFileOpen, kNoCompanyOpen},
    ProblemResult{Problem::kNewer, kNewerCompanyFile},
    ProblemResult{Problem::kForeign, kForeignCompanyFile},
    // The system's own results, as HRESULT_FROM_WIN32 makes them.
    ProblemResult{Problem::kMissing, static_cast<HRESULT>(0x80070002)},
    ProblemResult{Problem::kUnreadable, static_cast<HRESULT>(0x80070005)},
    ProblemResult{Problem::kReadOnly, static_cast<HRESULT>(0x80070013)},
    ProblemResult{Problem::kCannotWrite, static_cast<HRESULT>(0x8007001D)},
    ProblemResult{Problem::kLocked, static_cast<HRESULT>(0x80070020)},
    ProblemResult{Problem::kDiskFull, static_cast<HRESULT>(0x80070070)},
    ProblemResult{Problem::kDamaged, static_cast<HRESULT>(0x80070570)},
};

// The one that a test planned, or the problem's own.
[[nodiscard]] inline HRESULT ResultOf(const HostError& error) {
    const auto* const found = std::ranges::find(kProblemResults, error.GetProblem(), &ProblemResult::problem);
    return error.PlannedResult().value_or(found == kProblemResults.end() ? E_FAIL : found->result);
}

// Leaves the message where scripts find the description of an error. Returns the HRESULT.
inline HRESULT Report(HRESULT result, const std::string& message) {
    ComPtr<ICreateErrorInfo> creation;
    ComPtr<IErrorInfo> info;
    std::wstring text = WideFromUtf8(message);
    if (SUCCEEDED(::CreateErrorInfo(creation.Receive())) && SUCCEEDED(creation->SetDescription(text.data())) &&
        SUCCEEDED(creation->QueryInterface(IID_IErrorInfo, info.ReceiveVoid()))) {
        ::SetErrorInfo(0, info.Get());
    }
    return result;
}

// What the work returns, or the HRESULT for what it throws.
template <class Work>
[[nodiscard]] HRESULT Guarded(const Work& work) noexcept {
    try {
        return work();
    } catch (const HostError& error) {
        return Report(ResultOf(error), error.what());
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
