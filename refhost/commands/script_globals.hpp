// The object WScript of a page script: what a script host offers besides the language itself.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "com/object_root.hpp"

namespace paylodge::refhost {

// What a script asks for on its way, and what it was given.
struct ScriptSession {
    // Full path of the script.
    std::wstring file;
    std::vector<std::wstring> arguments;
    // The exit status that the script asked for with Quit.
    std::optional<int> quit;
};

// Writes UTF-8 straight to standard output, so that the order with what others print there is kept.
void PrintText(std::string_view text);

// IDispatch of objects with a handful of members that are known by name.
class NamedMembers : public IDispatch {
  public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* argument_error) override;

  protected:
    ~NamedMembers() = default;

    // Names and ids of the members; names count without regard to letter case.
    struct Member {
        const wchar_t* name;
        DISPID id;
    };
    [[nodiscard]] virtual std::span<const Member> Members() const noexcept = 0;
    // Arguments stand in reverse order; `result` is empty and never null.
    [[nodiscard]] virtual HRESULT Call(DISPID member, const DISPPARAMS& parameters, VARIANT* result) = 0;
};

// WScript: Echo(values...), Quit([status]), Arguments, ScriptFullName, FullName, CreateObject(name). The session has to
// outlive it.
class CScriptGlobals : public NamedMembers {
  public:
    using Row = InterfaceRow<CScriptGlobals>;
    static constexpr std::array kInterfaces = {Row::Of<IDispatch>()};

    explicit CScriptGlobals(ScriptSession* session) noexcept : session_(session) {}

  protected:
    ~CScriptGlobals() = default;
    [[nodiscard]] std::span<const Member> Members() const noexcept override;
    [[nodiscard]] HRESULT Call(DISPID member, const DISPPARAMS& parameters, VARIANT* result) override;

  private:
    ScriptSession* session_;
};

}  // namespace paylodge::refhost
