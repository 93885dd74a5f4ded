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

// The type that this one refers to at the given place, or null.
[[nodiscard]] ComPtr<ITypeInfo> ReferredBy(ITypeInfo& info, UINT place) {
    ComPtr<ITypeInfo> type;
    HREFTYPE reference = 0;
    if (FAILED(info.GetRefTypeOfImplType(place, &reference)) ||
        FAILED(info.GetRefTypeInfo(reference, type.Receive()))) {
        return {};
    }
    return type;
}

// A dual interface has two descriptions: one for scripts, which lists all members that there are, and this one, which
// lists its own and knows the interface that it extends.
[[nodiscard]] ComPtr<ITypeInfo> SlotsOf(ITypeInfo& info) {
    TypeAttributes attributes(info);
    if (FAILED(info.GetTypeAttr(attributes.Receive())) || attributes->typekind != TKIND_DISPATCH) {
        return ComPtr<ITypeInfo>(&info);
    }
    constexpr UINT kSlots = static_cast<UINT>(-1);
    return ReferredBy(info, kSlots);
}

// The interface that this one extends, or null.
[[nodiscard]] ComPtr<ITypeInfo> BaseOf(ITypeInfo& slots) {
    const ComPtr<ITypeInfo> base = ReferredBy(slots, 0);
    return base ? SlotsOf(*base.Get()) : ComPtr<ITypeInfo>();
}

constexpr auto kNameOf = [](const auto& member) { return View(member.name); };

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
        const std::wstring_view name(names[0]);
        const auto found = std::ranges::lower_bound(names_, name, {}, kNameOf);
        if (found != names_.end() && View(found->name) == name) {
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
    return TypeThatDeclares(member).Invoke(instance, member, flags, parameters, result, exception, argument_error);
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
        CacheMembers(*library.Get(), *info.Get());
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

void CCustomTypeInfoHolder::CacheMembers(ITypeLib& library, ITypeInfo& info) {
    names_.clear();
    members_.clear();
    for (auto slots = SlotsOf(info); slots; slots = BaseOf(*slots.Get())) {
        TypeAttributes attributes(*slots.Get());
        ComPtr<ITypeInfo> type;
        if (FAILED(slots->GetTypeAttr(attributes.Receive())) || IsEqualGUID(attributes->guid, IID_IDispatch) ||
            FAILED(library.GetTypeInfoOfGuid(attributes->guid, type.Receive()))) {
            break;
        }
        for (UINT index = 0; index < attributes->cFuncs; ++index) {
            FunctionDescription function(*slots.Get());
            OwnedBstr name;
            if (SUCCEEDED(slots->GetFuncDesc(index, function.Receive())) &&
                SUCCEEDED(slots->GetDocumentation(function->memid, name.Receive(), nullptr, nullptr, nullptr))) {
                names_.push_back({std::move(name), function->memid});
                members_.push_back({function->memid, type});
            }
        }
    }
    std::ranges::sort(names_, {}, kNameOf);
    std::ranges::sort(members_, {}, &DeclaredMember::id);
}

ITypeInfo& CCustomTypeInfoHolder::TypeThatDeclares(DISPID member) const noexcept {
    const auto found = std::ranges::lower_bound(members_, member, {}, &DeclaredMember::id);
    return found != members_.end() && found->id == member ? *found->type.Get() : *info_.Get();
}

}  // namespace paylodge
