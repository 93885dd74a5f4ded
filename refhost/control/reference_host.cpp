#include "refhost/control/reference_host.hpp"

#include <cmath>
#include <cstdint>
#include <optional>

#include "refhost/books/journal.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/xml_writer.hpp"
#include "refhost/objects/company_object.hpp"
#include "refhost/objects/host.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/property_values.hpp"

namespace paylodge::refhost {
namespace {

// Stands for a user at another machine who holds locks.
constexpr char kOtherUser = 0;

[[nodiscard]] RecordKey Key(BSTR category, LONG number) { return {EscapedText(View(category)), number}; }

// Scripts write 0x80004005, which is too large for a LONG, as well as its signed value.
[[nodiscard]] std::optional<HRESULT> ResultFromNumber(DOUBLE number) {
    constexpr DOUBLE kSmallest = -2147483648.0;
    constexpr DOUBLE kLargest = 4294967295.0;
    const bool is_in_range = number >= kSmallest && number <= kLargest;
    if (!is_in_range || number != std::floor(number)) {
        return std::nullopt;
    }
    return static_cast<HRESULT>(static_cast<std::uint32_t>(static_cast<std::int64_t>(number)));
}

[[nodiscard]] HRESULT ReportUnknownCall(BSTR name) {
    std::string names;
    for (const std::wstring& known : PlannableNames()) {
        names.append(names.empty() ? "" : ", ").append(Utf8FromWide(known));
    }
    return Report(E_INVALIDARG,
                  "FailCall knows no call " + Quoted(Utf8FromWide(View(name))) + ". It knows: " + names + '.');
}

[[nodiscard]] HRESULT PlanAnswer(PlannedAnswer answer, LONG nth) {
    if (nth < 0) {
        return E_INVALIDARG;
    }
    Host::Get().Plan().AnswerNth(std::move(answer), nth);
    return S_OK;
}

[[nodiscard]] HRESULT Count(size_t size, LONG* count) {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = static_cast<LONG>(size);
    return S_OK;
}

// One entry of a record, as the text that `text_of` takes from it.
template <class Entries>
[[nodiscard]] HRESULT ReturnEntry(const Entries& entries, LONG index, BSTR* text, const auto& text_of) {
    return Guarded([&]() -> HRESULT {
        if (index < 0 || static_cast<size_t>(index) >= entries.size()) {
            return DISP_E_BADINDEX;
        }
        return Return(text_of(entries[static_cast<size_t>(index)]), text);
    });
}

}  // namespace

HRESULT CReferenceHost::OpenCompanyFile(BSTR path) {
    return Guarded([&] {
        Host::Get().OpenCompanyFile(std::wstring(View(path)));
        return S_OK;
    });
}

HRESULT CReferenceHost::CloseCompanyFile() {
    return Guarded([] {
        Host::Get().CloseCompanyFile();
        return S_OK;
    });
}

HRESULT CReferenceHost::get_CompanyFile(BSTR* path) {
    return Guarded([&] { return Return(Host::Get().CompanyFilePath(), path); });
}

HRESULT CReferenceHost::FailCall(BSTR name, DOUBLE result, LONG nth) {
    return Guarded([&]() -> HRESULT {
        const auto planned = ResultFromNumber(result);
        if (!planned || nth < 0) {
            return Report(E_INVALIDARG, "FailCall takes a name, an HRESULT such as 0x80004005 and a number from 0 on.");
        }
        return Host::Get().Plan().FailCall(View(name), *planned, nth) ? S_OK : ReportUnknownCall(name);
    });
}

HRESULT CReferenceHost::AnswerEmpty(LONG nth) {
    return Guarded([&] { return PlanAnswer({std::wstring(), S_OK}, nth); });
}

HRESULT CReferenceHost::AnswerNull(LONG nth) {
    return Guarded([&] { return PlanAnswer({std::nullopt, S_OK}, nth); });
}

HRESULT CReferenceHost::AnswerNext(BSTR text, LONG result) {
    return Guarded([&] {
        Host::Get().Plan().AnswerNext({std::wstring(View(text)), result});
        return S_OK;
    });
}

HRESULT CReferenceHost::ClearFaults() {
    return Guarded([] {
        Host::Get().Plan().Clear();
        return S_OK;
    });
}

HRESULT CReferenceHost::get_CallCount(LONG* count) {
    return Guarded([&] { return Count(Host::Get().Calls().size(), count); });
}

HRESULT CReferenceHost::Call(LONG index, BSTR* text) {
    return ReturnEntry(Host::Get().Calls(), index, text, [](const std::wstring& call) { return call; });
}

HRESULT CReferenceHost::get_RequestCount(LONG* count) {
    return Guarded([&] { return Count(Host::Get().RecordedRequests().size(), count); });
}

HRESULT CReferenceHost::Request(LONG index, BSTR* text) {
    return ReturnEntry(Host::Get().RecordedRequests(), index, text,
                       [](const RecordedRequest& recorded) { return recorded.request; });
}

HRESULT CReferenceHost::Response(LONG index, BSTR* text) {
    return ReturnEntry(Host::Get().RecordedRequests(), index, text,
                       [](const RecordedRequest& recorded) { return recorded.response; });
}

HRESULT CReferenceHost::ClearCalls() {
    return Guarded([] {
        Host::Get().Calls().clear();
        Host::Get().RecordedRequests().clear();
        return S_OK;
    });
}

HRESULT CReferenceHost::EndProcessAt(LONG nth) {
    return Guarded([&] {
        if (nth < 0) {
            return E_INVALIDARG;
        }
        Host::Get().Plan().EndProcessAt(nth);
        return S_OK;
    });
}

HRESULT CReferenceHost::LockRecord(BSTR category, LONG number) {
    return Guarded([&] {
        const bool is_locked = Host::Get().CurrentCompany()->Records().Lock(Key(category, number), &kOtherUser);
        return is_locked ? S_OK : kNotLocked;
    });
}

HRESULT CReferenceHost::UnlockRecord(BSTR category, LONG number) {
    return Guarded([&] {
        const bool is_unlocked = Host::Get().CurrentCompany()->Records().Unlock(Key(category, number), &kOtherUser);
        return is_unlocked ? S_OK : kNotLocked;
    });
}

HRESULT CReferenceHost::Journal(LONG count, BSTR* text) {
    return Guarded([&] {
        if (count < 0) {
            return E_INVALIDARG;
        }
        const Element journal = ReadJournal(Host::Get().CurrentCompany()->Books(), count);
        return Return(WideFromUtf8(CompactXml(journal)), text);
    });
}

HRESULT CReferenceHost::get_PlannedFailures(BSTR* lines) {
    return Guarded([&] {
        std::wstring text;
        for (const FailingCall& failure : Host::Get().Plan().Failures()) {
            text.append(failure.call).append(L" ").append(std::to_wstring(failure.code)).append(L" ");
            text.append(std::to_wstring(failure.nth)).append(L"\n");
        }
        return Return(text, lines);
    });
}

HRESULT CReferenceHost::get_PlannableCalls(BSTR* names) {
    return Guarded([&] {
        std::wstring text;
        for (const std::wstring& name : PlannableNames()) {
            text.append(text.empty() ? L"" : L" ").append(name);
        }
        return Return(text, names);
    });
}

HRESULT CReferenceHost::InterfaceSupportsErrorInfo(REFIID id) {
    return IsEqualIID(id, IID_IReferenceHost) ? S_OK : S_FALSE;
}

}  // namespace paylodge::refhost
