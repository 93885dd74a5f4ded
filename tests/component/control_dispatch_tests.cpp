// The control as page script meets it: by name, through IDispatch.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "com/variant.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/variant_values.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"

namespace paylodge::test {
namespace {

class ControlDispatch : public ControlComponent {
  protected:
    [[nodiscard]] DISPID IdOf(const std::string& name) {
        std::wstring text(name.begin(), name.end());
        LPOLESTR names[] = {text.data()};
        DISPID id = DISPID_UNKNOWN;
        EXPECT_HRESULT(S_OK, control->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << name;
        return id;
    }
    [[nodiscard]] HRESULT Call(const char* method, std::vector<VARIANT> arguments) {
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        OwnedVariant result;
        return control->Invoke(IdOf(method), IID_NULL, LOCALE_USER_DEFAULT, FlagsOf(Kind::kMethod), &parameters,
                               result.Receive(), nullptr, nullptr);
    }
};

TEST_F(ControlDispatch, NamesLeadToTheirIds) {
    for (const InterfaceMember& member : ControlMembers()) {
        EXPECT_EQ(member.id, IdOf(member.name)) << member.name;
    }
    EXPECT_EQ(7, IdOf("lhtransactionnotificationdata"));
    EXPECT_EQ(32, IdOf("HANDLEAIDSELECTTION"));
}

TEST_F(ControlDispatch, NamesOfEventsAreNoMembers) {
    std::wstring text = L"OnProcessLHRequest";
    LPOLESTR names[] = {text.data()};
    DISPID id = 0;
    EXPECT_HRESULT(DISP_E_UNKNOWNNAME, control->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
}

class NotificationData : public ControlDispatch {
  protected:
    [[nodiscard]] HRESULT Put(VARIANT value) {
        DISPID put = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{&value, &put, 1, 1};
        return control->Invoke(id_, IID_NULL, LOCALE_USER_DEFAULT, FlagsOf(Kind::kPut), &parameters, nullptr, nullptr,
                               nullptr);
    }
    [[nodiscard]] OwnedBstr Get() {
        DISPPARAMS none{};
        VARIANT result{};
        EXPECT_HRESULT(S_OK, control->Invoke(id_, IID_NULL, LOCALE_USER_DEFAULT, FlagsOf(Kind::kGet), &none, &result,
                                             nullptr, nullptr));
        EXPECT_EQ(VT_BSTR, V_VT(&result));
        return OwnedBstr(V_BSTR(&result));
    }

  private:
    const DISPID id_ = IdOf("LHTransactionNotificationData");
};

// A page cannot tell null, which the slot returns, from the empty string.
TEST_F(NotificationData, IsNothingBeforeAnythingWasStored) {
    EXPECT_EQ(L"", View(Get()));
    wchar_t mark[] = L"untouched";
    BSTR got = mark;
    EXPECT_HRESULT(S_OK, control->get_LHTransactionNotificationData(&got));
    EXPECT_EQ(nullptr, got);
}

TEST_F(NotificationData, IsWhatWasPut) {
    constexpr std::wstring_view kData(L"a\0\u4e2d", 3);
    EXPECT_HRESULT(S_OK, Put(Text(MakeBstr(kData))));
    EXPECT_EQ(kData, View(Get()));
    EXPECT_HRESULT(S_OK, Put(Text(MakeBstr(L"b"))));
    EXPECT_EQ(L"b", View(Get()));
}

TEST_F(NotificationData, IsACopyInBothDirections) {
    OwnedBstr data = MakeBstr(L"mine");
    EXPECT_HRESULT(S_OK, Put(Text(data)));
    data.Get()[0] = L'X';
    const OwnedBstr first = Get();
    EXPECT_EQ(L"mine", View(first));
    EXPECT_NE(first.Get(), Get().Get());
}

TEST_F(NotificationData, IsSharedByAllControls) {
    EXPECT_HRESULT(S_OK, Put(Text(MakeBstr(L"data"))));
    OwnedBstr got;
    EXPECT_HRESULT(S_OK, CreateControl(module)->get_LHTransactionNotificationData(got.Receive()));
    EXPECT_EQ(L"data", View(got));
}

// A control whose events are recorded.
class ControlChannel : public ControlDispatch {
  protected:
    ControlChannel() {
        DWORD cookie = 0;
        EXPECT_HRESULT(S_OK, EventPoint(*control.Get())->Advise(sink_.Get(), &cookie));
    }
    [[nodiscard]] HRESULT Push() { return Call("SetTransactionID", {Text(id_)}); }

    Record record_;

  private:
    const ComPtr<ComObject<RecordingSink>> sink_ = ComObject<RecordingSink>::Create(record_, "event", kControlEvents);
    const OwnedBstr id_ = MakeBstr(L"42");
};

TEST_F(ControlChannel, IsTheDefaultUntilAnotherIsNamed) {
    EXPECT_HRESULT(DISP_E_EXCEPTION, Push());
    EXPECT_HRESULT(S_OK, Call("SubscribeToNotifications", {}));
    EXPECT_HRESULT(S_OK, Push());
    EXPECT_EQ("event5", record_.Take());
    EXPECT_HRESULT(S_OK, Call("UnSubscribeFromNotifications", {}));
    EXPECT_HRESULT(DISP_E_EXCEPTION, Push());
}

// What a page leaves undefined arrives as the empty name, which is a name like any other.
TEST_F(ControlChannel, NamedByAnEmptyValueHasTheEmptyName) {
    const OwnedBstr empty = MakeBstr(L"");
    EXPECT_HRESULT(S_OK, Call("SetChannelName", {OfType(VT_EMPTY)}));
    EXPECT_HRESULT(DISP_E_EXCEPTION, Push());
    EXPECT_HRESULT(S_OK, Call("SubscribeToNotifications2", {Text(empty)}));
    EXPECT_HRESULT(S_OK, Push());
    EXPECT_EQ("event5", record_.Take());
    EXPECT_HRESULT(S_OK, Call("UnSubscribeFromNotifications2", {OfType(VT_EMPTY)}));
    EXPECT_HRESULT(DISP_E_EXCEPTION, Push());
}

}  // namespace
}  // namespace paylodge::test
