// The saved form of a control. There are no properties in it.

#include <windows.h>

#include "control/control_base.hpp"

namespace paylodge {
namespace {

constexpr DWORD kFormat = 1;
constexpr wchar_t kStreamName[] = L"Contents";

}  // namespace

ULONG ControlBase::SavedSize() noexcept { return sizeof kFormat; }

HRESULT ControlBase::SaveControl(IStream& stream, bool clear_dirty) {
    ULONG written = 0;
    const HRESULT result = stream.Write(&kFormat, sizeof kFormat, &written);
    if (FAILED(result)) {
        return result;
    }
    if (written != sizeof kFormat) {
        return STG_E_MEDIUMFULL;
    }
    if (clear_dirty) {
        is_dirty_ = false;
    }
    return S_OK;
}

HRESULT ControlBase::LoadControl(IStream& stream) {
    DWORD format = 0;
    ULONG read = 0;
    const HRESULT result = stream.Read(&format, sizeof format, &read);
    if (FAILED(result)) {
        return result;
    }
    if (read != sizeof format || format != kFormat) {
        return E_FAIL;
    }
    is_dirty_ = false;
    return S_OK;
}

HRESULT ControlBase::SaveControl(IStorage& storage) {
    ComPtr<IStream> stream;
    const HRESULT result =
        storage.CreateStream(kStreamName, STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0, 0, stream.Receive());
    return FAILED(result) ? result : SaveControl(*stream.Get(), false);
}

HRESULT ControlBase::LoadControl(IStorage& storage) {
    ComPtr<IStream> stream;
    const HRESULT result =
        storage.OpenStream(kStreamName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Receive());
    return FAILED(result) ? result : LoadControl(*stream.Get());
}

}  // namespace paylodge
