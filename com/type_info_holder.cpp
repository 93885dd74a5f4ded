#include "com/type_info_holder.hpp"

#include <algorithm>

#include "com/module.hpp"

namespace paylodge {
namespace {

// A description that the type information hands out and takes back.
template <class Description, void (STDMETHODCALLTYPE ITypeInfo::*release)(Description*)>
class TypeDescription {
  public:
    explicit TypeDescription(ITypeInfo& info) noexcept : info_(info) {}
    ~TypeDescription() {
        if (description_ != nullptr) {
            (info_.*release)(description_);
        }
    }
    TypeDescription(const TypeDescription&) = delete;
    TypeDescription& operator=(const TypeDescription&) = delete;

    [[nodiscard]] Description** Receive() noexcept { return &description_; }
    const Description* operator->() const noexcept { return description_; }

  private:
    ITypeInfo& info_;
    Description* description_ = nullptr;
};
using TypeAttributes = TypeDescription<TYPEATTR, &ITypeInfo::ReleaseTypeAttr>;
using FunctionDescription = TypeDescription<FUNCDESC, &ITypeInfo::ReleaseFuncDesc>;

// The type that this one extends, or null.
[[nodiscard]] ComPtr<ITypeInfo> BaseOf(ITypeInfo& info) {
    ComPtr<ITypeInfo> base;
    HREFTYPE reference = 0;
    if (FAILED(info.GetRefTypeOfImplType(0, &reference)) || FAILED(info.GetRefTypeInfo(reference, base.Receive()))) {
        return {};
    }
    return base;
}

}  // namespace

HRESULT CCustomTypeInfoHolder::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) {
    if (info == nullptr) {
        return E_POINTER;
    }
    *info = nullptr;
    if (index != 0) {
        return DISP_E_BADINDEX;
    }
    const HRESULT result = Load();
    if (SUCCEEDED(result)) {
        *info = ComPtr<ITypeInfo>(info_).Detach();
    }
    return result;
}

HRESULT CCustomTypeInfoHolder::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID /*locale*/,
                                             DISPID* ids) {
    if (!IsEqualIID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (names == nullptr || ids == nullptr || count == 0) {
        return E_INVALIDARG;
    }
    if (const HRESULT result = Load(); FAILED(result)) {
        return result;
    }
    if (count == 1 && names[0] != nullptr) {
        const auto found = std::ranges::find_if(
            members_,
            [name = std::wstring_view(names[0])](const NamedMember& member) { return View(member.name) == name; });
        if (found != members_.end()) {
            *ids = found->id;
            return S_OK;
        }
    }
    // Other spellings of a name and names of arguments.
    return info_->GetIDsOfNames(names, count, ids);
}

HRESULT CCustomTypeInfoHolder::Invoke(void* instance, DISPID member, REFIID reserved, LCID /*locale*/, WORD flags,
                                      DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                      UINT* argument_error) {
    if (!IsEqualIID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (parameters == nullptr) {
        return E_INVALIDARG;
    }
    if (const HRESULT loaded = Load(); FAILED(loaded)) {
        return loaded;
    }
    // An error left behind by an earlier call must not be taken for one of this call.
    ::SetErrorInfo(0, nullptr);
    return info_->Invoke(instance, member, flags, parameters, result, exception, argument_error);
}

HRESULT CCustomTypeInfoHolder::Load() {
    if (info_) {
        return S_OK;
    }
    ComPtr<ITypeLib> library;
    HRESULT result = ::LoadTypeLibEx(Module::Path().c_str(), REGKIND_NONE, library.Receive());
    if (SUCCEEDED(result)) {
        result = CheckLibrary(*library.Get());
    }
    ComPtr<ITypeInfo> info;
    if (SUCCEEDED(result)) {
        result = library->GetTypeInfoOfGuid(*interface_id_, info.Receive());
    }
    if (SUCCEEDED(result)) {
        CacheNames(*info.Get());
        info_ = std::move(info);
    }
    return result;
}

HRESULT CCustomTypeInfoHolder::CheckLibrary(ITypeLib& library) const {
    TLIBATTR* attributes = nullptr;
    if (const HRESULT result = library.GetLibAttr(&attributes); FAILED(result)) {
        return result;
    }
    const bool is_ours = IsEqualGUID(attributes->guid, *library_id_) && attributes->wMajorVerNum == major_ &&
                         attributes->wMinorVerNum == minor_;
    library.ReleaseTLibAttr(attributes);
    return is_ours ? S_OK : TYPE_E_LIBNOTREGISTERED;
}

void CCustomTypeInfoHolder::CacheNames(ITypeInfo& info) {
    members_.clear();
    for (ComPtr<ITypeInfo> type(&info); type; type = BaseOf(*type.Get())) {
        TypeAttributes attributes(*type.Get());
        if (FAILED(type->GetTypeAttr(attributes.Receive())) || IsEqualGUID(attributes->guid, IID_IDispatch)) {
            return;
        }
        for (UINT index = 0; index < attributes->cFuncs; ++index) {
            FunctionDescription function(*type.Get());
            OwnedBstr name;
            if (SUCCEEDED(type->GetFuncDesc(index, function.Receive())) &&
                SUCCEEDED(type->GetDocumentation(function->memid, name.Receive(), nullptr, nullptr, nullptr))) {
                members_.push_back({std::move(name), function->memid});
            }
        }
    }
}

}  // namespace paylodge
