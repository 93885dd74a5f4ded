#include "tests/component/member_call.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <sstream>

#include "com/ansi_text.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr VARIANT_BOOL kUntouchedBool = 0x5A5A;
wchar_t g_untouched_text[] = L"untouched";

// An out parameter of either type, with a sentinel in it.
struct Place {
    BSTR text = g_untouched_text;
    VARIANT_BOOL truth = kUntouchedBool;
};

[[nodiscard]] std::string ShowAndFree(VARTYPE type, const Place& place) {
    if (type == VT_BOOL) {
        return place.truth == kUntouchedBool ? "untouched" : std::to_string(place.truth);
    }
    if (place.text == g_untouched_text) {
        return "untouched";
    }
    const OwnedBstr text(place.text);
    return text ? "\"" + AnsiFromBstr(text.Get()) + "\"" : "null";
}

// The values of one call, in the order of the declaration, and the places that they point to.
class CallValues {
  public:
    CallValues(const Member& member, bool with_result) : arguments_(ArgumentsOf(member)) {
        for (const Argument& argument : arguments_) {
            if (argument.IsIn()) {
                values_.push_back(MakeInput(argument.type));
            } else if (with_result || !argument.IsResult()) {
                values_.push_back(MakeOutput(argument.type));
            }
        }
    }

    [[nodiscard]] std::vector<VARIANT>& Values() { return values_; }
    [[nodiscard]] const std::vector<Argument>& Arguments() const { return arguments_; }

    // The results in the order of the declaration; `result` stands for one that did not come through a place.
    [[nodiscard]] std::string ShowResults(const std::string& result = {}) const {
        std::string shown;
        size_t used = 0;
        for (const Argument& argument : arguments_) {
            if (!argument.IsIn()) {
                shown += shown.empty() ? "" : ", ";
                shown += used < places_.size() ? ShowAndFree(argument.type, places_[used]) : result;
                ++used;
            }
        }
        return shown;
    }

  private:
    [[nodiscard]] VARIANT MakeInput(VARTYPE type) {
        VARIANT value{};
        V_VT(&value) = type;
        if (type == VT_BOOL) {
            V_BOOL(&value) = VARIANT_TRUE;
        } else {
            V_BSTR(&value) = texts_.emplace_back(MakeBstr(L"a&" + std::to_wstring(texts_.size() + 1))).Get();
        }
        return value;
    }
    [[nodiscard]] VARIANT MakeOutput(VARTYPE type) {
        Place& place = places_.emplace_back();
        VARIANT value{};
        V_VT(&value) = static_cast<VARTYPE>(VT_BYREF | type);
        V_BYREF(&value) = type == VT_BOOL ? static_cast<void*>(&place.truth) : &place.text;
        return value;
    }

    std::vector<Argument> arguments_;
    std::vector<VARIANT> values_;
    std::deque<OwnedBstr> texts_;
    std::deque<Place> places_;
};

[[nodiscard]] HRESULT CallSlotWith(IUnknown& object, int slot, std::vector<VARIANT>& values) {
    std::vector<VARTYPE> types;
    std::vector<VARIANT*> pointers;
    for (VARIANT& value : values) {
        types.push_back(V_VT(&value));
        pointers.push_back(&value);
    }
    VARIANT result{};
    EXPECT_HRESULT(S_OK, ::DispCallFunc(&object, static_cast<ULONG_PTR>(slot) * sizeof(void*), CC_STDCALL, VT_I4,
                                        static_cast<UINT>(values.size()), types.data(), pointers.data(), &result));
    return V_I4(&result);
}

// What a page sees of the result; frees it.
[[nodiscard]] std::string ShowAndClear(VARIANT& result) {
    std::string shown = "untouched";
    if (V_VT(&result) == VT_BOOL) {
        shown = std::to_string(V_BOOL(&result));
    } else if (V_VT(&result) == VT_BSTR) {
        // A page cannot tell null from the empty string.
        shown = "\"" + AnsiFromBstr(V_BSTR(&result)) + "\"";
    } else if (V_VT(&result) != VT_EMPTY) {
        shown = "type " + std::to_string(V_VT(&result));
    }
    EXPECT_HRESULT(S_OK, ::VariantClear(&result));
    return shown;
}

}  // namespace

std::vector<Argument> ArgumentsOf(const Member& member) {
    std::vector<Argument> arguments;
    std::istringstream text(member.arguments);
    std::string direction;
    while (text >> direction) {
        std::string type;
        std::string name;
        text >> type;
        std::getline(text >> std::ws, name, ',');
        arguments.push_back({direction, static_cast<VARTYPE>(type.starts_with("BSTR") ? VT_BSTR : VT_BOOL), name});
    }
    return arguments;
}

Outcome CallSlot(IUnknown& object, const Member& member) {
    CallValues values(member, true);
    const HRESULT result = CallSlotWith(object, member.slot, values.Values());
    return {.result = result, .results = values.ShowResults()};
}

HRESULT CallSlotWithoutResult(IUnknown& object, const Member& member) {
    CallValues values(member, true);
    V_BYREF(&values.Values().back()) = nullptr;
    return CallSlotWith(object, member.slot, values.Values());
}

HRESULT CallSlot(IUnknown& object, int slot, BSTR argument) {
    std::vector<VARIANT> values(1);
    V_VT(values.data()) = VT_BSTR;
    V_BSTR(values.data()) = argument;
    return CallSlotWith(object, slot, values);
}

WORD FlagsOf(Kind kind) {
    constexpr WORD kFlags[] = {DISPATCH_METHOD, DISPATCH_PROPERTYGET | DISPATCH_METHOD, DISPATCH_PROPERTYPUT};
    return kFlags[static_cast<int>(kind)];
}

Outcome CallInvoke(IDispatch& object, const Member& member) {
    CallValues values(member, false);
    std::ranges::reverse(values.Values());
    DISPID put = DISPID_PROPERTYPUT;
    const bool is_put = member.kind == Kind::kPut;
    DISPPARAMS parameters{values.Values().data(), is_put ? &put : nullptr, static_cast<UINT>(values.Values().size()),
                          is_put ? 1U : 0U};
    VARIANT result{};
    EXCEPINFO exception{};
    Outcome outcome;
    outcome.result = object.Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, FlagsOf(member.kind), &parameters,
                                   is_put ? nullptr : &result, &exception, nullptr);
    outcome.results = values.ShowResults(ShowAndClear(result));
    outcome.exception = exception.scode;
    return outcome;
}

}  // namespace paylodge::test
