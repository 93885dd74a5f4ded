#include "com/dispatch_impl.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/ansi_text.hpp"
#include "com/object_root.hpp"
#include "com/variant.hpp"
#include "paylodge_methods.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/platform.hpp"

namespace paylodge {
namespace {

// The smallest dual interface of the type library with methods of several shapes. Records its calls.
template <class Dispatch>
class Example : public Dispatch {
  public:
    using Row = InterfaceRow<Example>;
    static constexpr std::array kInterfaces = {Row::template Of<IPaylodge>(), Row::template Of<IDispatch>()};

    STDMETHODIMP GetAccounts(BSTR type, BSTR* names) override {
        calls.push_back("GetAccounts " + AnsiFromBstr(type));
        *names = MakeBstr(L"names").Detach();
        return result;
    }
    STDMETHODIMP GetItems(BSTR*) override {
        on_call();
        return Call("GetItems");
    }
    STDMETHODIMP CreateTxns(BSTR requests, VARIANT_BOOL full, BSTR*) override {
        calls.push_back("CreateTxns " + AnsiFromBstr(requests) + " " + std::to_string(full));
        return result;
    }
    STDMETHODIMP IsTaxableItem(BSTR, VARIANT_BOOL* is_taxable) override {
        *is_taxable = VARIANT_TRUE;
        return Call("IsTaxableItem");
    }
    STDMETHODIMP GetLastTxnDownloadTime(BSTR, BSTR*) override { return Call("GetLastTxnDownloadTime"); }
    STDMETHODIMP SetLastTxnDownloadTime(BSTR, BSTR) override { return Call("SetLastTxnDownloadTime"); }
    STDMETHODIMP OpenTxnForm(BSTR type, BSTR id) override {
        calls.push_back("OpenTxnForm " + AnsiFromBstr(type) + " " + AnsiFromBstr(id));
        return result;
    }
    STDMETHODIMP GetPaymentMethods(BSTR*) override { return Call("GetPaymentMethods"); }

    std::vector<std::string> calls;
    HRESULT result = S_OK;
    std::function<void()> on_call = [] {};

  protected:
    ~Example() = default;

  private:
    HRESULT Call(const char* name) {
        calls.emplace_back(name);
        return result;
    }
};

using Scriptable = Example<IDispatchImpl<IPaylodge, &IID_IPaylodge, &LIBID_PAYLODGELib, 1, 0>>;

// An argument of a call; only looked at.
[[nodiscard]] VARIANT Argument(const OwnedBstr& text) {
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text.Get();
    return value;
}

// Stands in an out parameter before a call that has to empty it.
ITypeInfo* const kNoTypeInfo = reinterpret_cast<ITypeInfo*>(0x10);

class DispatchImpl : public ::testing::Test {
  protected:
    [[nodiscard]] HRESULT Invoke(DISPID member, DISPPARAMS parameters, VARIANT* result = nullptr,
                                 EXCEPINFO* exception = nullptr) {
        return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, result, exception,
                              nullptr);
    }

    ComPtr<ComObject<Scriptable>> object = ComObject<Scriptable>::Create();
};

TEST_F(DispatchImpl, HasOneTypeInfo) {
    UINT count = 7;
    EXPECT_HRESULT(S_OK, object->GetTypeInfoCount(&count));
    EXPECT_EQ(1U, count);
    EXPECT_HRESULT(E_POINTER, object->GetTypeInfoCount(nullptr));
}

TEST_F(DispatchImpl, TypeInfoDescribesTheInterfaceAndIsTheSameEachTime) {
    ComPtr<ITypeInfo> info;
    ASSERT_HRESULT(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive()));
    TYPEATTR* attributes = nullptr;
    ASSERT_HRESULT(S_OK, info->GetTypeAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(IID_IPaylodge, attributes->guid));
    info->ReleaseTypeAttr(attributes);

    const auto other_object = ComObject<Scriptable>::Create();
    ComPtr<ITypeInfo> again;
    ASSERT_HRESULT(S_OK, other_object->GetTypeInfo(0, 0, again.Receive()));
    EXPECT_EQ(info.Get(), again.Get());
}

TEST_F(DispatchImpl, TypeInfoWithAnotherIndexOrWithoutASlotIsRefused) {
    ITypeInfo* info = kNoTypeInfo;
    EXPECT_HRESULT(DISP_E_BADINDEX, object->GetTypeInfo(1, LOCALE_USER_DEFAULT, &info));
    EXPECT_EQ(nullptr, info);
    EXPECT_HRESULT(E_POINTER, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr));
}

// GetIDsOfNames for one name.
[[nodiscard]] HRESULT FindId(IDispatch& object, const wchar_t* name, DISPID* id) {
    std::wstring text = name;
    LPOLESTR names[] = {text.data()};
    return object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, id);
}

TEST_F(DispatchImpl, FindsNamesInAnyLetterCase) {
    for (const wchar_t* name : {L"GetAccounts", L"getaccounts", L"GETACCOUNTS", L"gEtAcCoUnTs"}) {
        DISPID id = DISPID_UNKNOWN;
        EXPECT_HRESULT(S_OK, FindId(*object.Get(), name, &id));
        EXPECT_EQ(1, id);
    }
}

TEST_F(DispatchImpl, UnknownNamesAreDispEUnknownName) {
    for (const wchar_t* name : {L"", L"GetAccount", L"GetAccountsX", L"get_GetAccounts", L"ProcessLHRequest"}) {
        DISPID id = 7;
        EXPECT_HRESULT(DISP_E_UNKNOWNNAME, FindId(*object.Get(), name, &id));
        EXPECT_EQ(DISPID_UNKNOWN, id);
    }
}

TEST_F(DispatchImpl, FindsArgumentsBesideTheirMember) {
    std::wstring texts[] = {L"CreateTxns", L"bFullResponse", L"txnRequests"};
    LPOLESTR names[] = {texts[0].data(), texts[1].data(), texts[2].data()};
    DISPID ids[] = {-2, -2, -2};
    EXPECT_HRESULT(S_OK, object->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(3, ids[0]);
    EXPECT_EQ(1, ids[1]);
    EXPECT_EQ(0, ids[2]);
}

TEST_F(DispatchImpl, NamesAreRefusedForAnotherInterfaceOrNullArguments) {
    DISPID id = 7;
    std::wstring text = L"GetAccounts";
    LPOLESTR names[] = {text.data()};
    EXPECT_HRESULT(DISP_E_UNKNOWNINTERFACE, object->GetIDsOfNames(IID_IPaylodge, names, 1, 0, &id));
    EXPECT_HRESULT(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_HRESULT(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, names, 1, 0, nullptr));
    EXPECT_HRESULT(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, names, 0, 0, &id));
    EXPECT_EQ(7, id);
}

TEST_F(DispatchImpl, NullNameIsRefused) {
    LPOLESTR names[] = {nullptr};
    DISPID id = 7;
    EXPECT_TRUE(FAILED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)));
}

TEST_F(DispatchImpl, ArgumentsStandInReverseOrder) {
    const OwnedBstr type = MakeBstr(L"type");
    const OwnedBstr id = MakeBstr(L"id");
    VARIANT arguments[] = {Argument(id), Argument(type)};
    EXPECT_HRESULT(S_OK, Invoke(7, {arguments, nullptr, 2, 0}));
    EXPECT_EQ(std::vector<std::string>{"OpenTxnForm type id"}, object->calls);
}

TEST_F(DispatchImpl, NamedArgumentsComeInAnyOrder) {
    const OwnedBstr type = MakeBstr(L"type");
    const OwnedBstr id = MakeBstr(L"id");
    VARIANT arguments[] = {Argument(type), Argument(id)};
    DISPID named[] = {0, 1};
    EXPECT_HRESULT(S_OK, Invoke(7, {arguments, named, 2, 2}));
    EXPECT_EQ(std::vector<std::string>{"OpenTxnForm type id"}, object->calls);
}

TEST_F(DispatchImpl, ReturnsTheResult) {
    const OwnedBstr type = MakeBstr(L"Bank");
    VARIANT arguments[] = {Argument(type)};
    OwnedVariant result;
    EXPECT_HRESULT(S_OK, Invoke(1, {arguments, nullptr, 1, 0}, result.Receive()));
    ASSERT_EQ(VT_BSTR, result.Type());
    EXPECT_EQ(L"names", View(result.Bstr()));
}

TEST_F(DispatchImpl, FailureIsAnExceptionWithItsCode) {
    object->result = DISP_E_DIVBYZERO;
    const OwnedBstr text = MakeBstr(L"x");
    VARIANT arguments[] = {Argument(text), Argument(text)};
    EXCEPINFO exception{};
    EXPECT_HRESULT(DISP_E_EXCEPTION, Invoke(7, {arguments, nullptr, 2, 0}, nullptr, &exception));
    EXPECT_HRESULT(object->result, exception.scode);
    EXPECT_EQ(nullptr, exception.bstrDescription);
}

// The platform's code between a script and the member is not made for exceptions.
TEST_F(DispatchImpl, MemoryThatRunsOutIsReturnedToScripts) {
    OwnedVariant result;
    object->on_call = [] { throw std::bad_alloc(); };
    EXPECT_HRESULT(E_OUTOFMEMORY, Invoke(2, {}, result.Receive()));
    object->on_call = [] { _com_issue_error(E_OUTOFMEMORY); };
    EXCEPINFO exception{};
    EXPECT_HRESULT(E_OUTOFMEMORY, Invoke(2, {}, result.Receive(), &exception));
    object->on_call = [] { static_cast<void>(std::string(std::string().max_size(), 'x')); };
    EXPECT_HRESULT(E_OUTOFMEMORY, Invoke(2, {}, result.Receive()));
    EXPECT_EQ(VT_EMPTY, result.Type());
    EXPECT_TRUE(object->calls.empty());
}

TEST_F(DispatchImpl, ComErrorThatAMemberThrowsIsAnExceptionWithItsHResult) {
    object->on_call = [] { _com_issue_error(DISP_E_OVERFLOW); };
    EXCEPINFO exception{};
    EXPECT_HRESULT(DISP_E_EXCEPTION, Invoke(2, {}, nullptr, &exception));
    EXPECT_HRESULT(DISP_E_OVERFLOW, exception.scode);
}

TEST_F(DispatchImpl, AnythingElseThatAMemberThrowsIsUnexpected) {
    object->on_call = [] { throw std::runtime_error("unexpected"); };
    EXCEPINFO exception{};
    EXPECT_HRESULT(DISP_E_EXCEPTION, Invoke(2, {}, nullptr, &exception));
    EXPECT_HRESULT(E_UNEXPECTED, exception.scode);
}

TEST_F(DispatchImpl, CallersOfTheSlotGetWhatAMemberThrows) {
    object->on_call = [] { _com_issue_error(E_OUTOFMEMORY); };
    EXPECT_THROW(object->GetItems(nullptr), _com_error);
}

TEST_F(DispatchImpl, ErrorOfAnEarlierCallIsNotTakenForThisOne) {
    ComPtr<ICreateErrorInfo> creator;
    ComPtr<IErrorInfo> error;
    ASSERT_HRESULT(S_OK, ::CreateErrorInfo(creator.Receive()));
    const OwnedBstr description = MakeBstr(L"an earlier error");
    ASSERT_HRESULT(S_OK, creator->SetDescription(description.Get()));
    ASSERT_HRESULT(S_OK, creator.As(error));
    ASSERT_HRESULT(S_OK, ::SetErrorInfo(0, error.Get()));

    object->result = E_FAIL;
    VARIANT arguments[] = {Argument(description), Argument(description)};
    EXCEPINFO exception{};
    EXPECT_HRESULT(DISP_E_EXCEPTION, Invoke(7, {arguments, nullptr, 2, 0}, nullptr, &exception));
    const OwnedBstr told(exception.bstrDescription);
    EXPECT_FALSE(static_cast<bool>(told));
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrHelpFile);
}

TEST_F(DispatchImpl, CallsThatDoNotFitNeverReachTheObject) {
    const OwnedBstr text = MakeBstr(L"x");
    VARIANT one[] = {Argument(text)};
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Invoke(0x99, {one, nullptr, 1, 0}));
    EXPECT_HRESULT(DISP_E_BADPARAMCOUNT, Invoke(1, {nullptr, nullptr, 0, 0}));
    EXPECT_HRESULT(E_INVALIDARG, object->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr));
    DISPPARAMS parameters{one, nullptr, 1, 0};
    EXPECT_HRESULT(DISP_E_UNKNOWNINTERFACE,
                   object->Invoke(1, IID_IPaylodge, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr));
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND,
                   object->Invoke(1, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr));
    EXPECT_TRUE(object->calls.empty());
}

TEST_F(DispatchImpl, ArgumentThatCannotBeConvertedIsNamed) {
    const OwnedBstr text = MakeBstr(L"x");
    VARIANT arguments[] = {Argument(text), Argument(text)};  // bFullResponse, txnRequests
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    UINT wrong = 99;
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH,
                   object->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, &wrong));
    // Wine does not say which one.
    EXPECT_EQ(test::WindowsOrWine(0U, 99U), wrong);
    EXPECT_TRUE(object->calls.empty());
}

TEST_F(DispatchImpl, SurplusArgumentsAreDispEBadParamCount) {
    const OwnedBstr text = MakeBstr(L"x");
    VARIANT three[] = {Argument(text), Argument(text), Argument(text)};
    // Wine leaves them aside.
    EXPECT_HRESULT(test::WindowsOrWine(DISP_E_BADPARAMCOUNT, S_OK), Invoke(7, {three, nullptr, 3, 0}));
}

// Every method returns why the type information could not be loaded.
template <class Dispatch>
void ExpectNotLoaded(HRESULT expected) {
    const auto object = ComObject<Example<Dispatch>>::Create();
    for (int attempt = 0; attempt < 2; ++attempt) {
        ITypeInfo* info = kNoTypeInfo;
        EXPECT_HRESULT(expected, object->GetTypeInfo(0, 0, &info));
        EXPECT_EQ(nullptr, info);
        DISPID id = 7;
        EXPECT_HRESULT(expected, FindId(*object.Get(), L"GetAccounts", &id));
        DISPPARAMS none{};
        EXPECT_HRESULT(expected, object->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));
    }
}

constexpr GUID kUnknownId = {0x1B0B0A43, 0x7C1E, 0x4B0B, {0x9A, 0x0E, 0x3C, 0x52, 0x11, 0x6A, 0x71, 0x01}};

TEST(TypeInfoHolder, LibraryWithAnotherIdIsNotOurs) {
    ExpectNotLoaded<IDispatchImpl<IPaylodge, &IID_IPaylodge, &kUnknownId, 1, 0>>(TYPE_E_LIBNOTREGISTERED);
}

TEST(TypeInfoHolder, LibraryWithAnotherVersionIsNotOurs) {
    ExpectNotLoaded<IDispatchImpl<IPaylodge, &IID_IPaylodge, &LIBID_PAYLODGELib, 2, 0>>(TYPE_E_LIBNOTREGISTERED);
    ExpectNotLoaded<IDispatchImpl<IPaylodge, &IID_IPaylodge, &LIBID_PAYLODGELib, 1, 1>>(TYPE_E_LIBNOTREGISTERED);
}

TEST(TypeInfoHolder, InterfaceThatTheLibraryLacksIsNotFound) {
    ExpectNotLoaded<IDispatchImpl<IPaylodge, &kUnknownId, &LIBID_PAYLODGELib, 1, 0>>(TYPE_E_ELEMENTNOTFOUND);
}

}  // namespace
}  // namespace paylodge
