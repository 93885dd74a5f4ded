// The saved form of a control. There are no properties in it.

#include <windows.h>

#include "control/control_base.hpp"

namespace paylodge {
namespace {

// What a stream begins with: the version of the framework that wrote it. All have been the same for a control without
// properties, so the lowest is written, which every reader accepts.
constexpr DWORD kWrittenVersion = 1;
constexpr DWORD kNewestVersion = 0x0E00;
constexpr wchar_t kStreamName[] = L"Contents";

}  // namespace

ULONG ControlBase::SavedSize() noexcept { return sizeof kWrittenVersion; }

HRESULT ControlBase::SaveControl(IStream& stream, bool clear_dirty) {
    ULONG written = 0;
    const HRESULT result = stream.Write(&kWrittenVersion, sizeof kWrittenVersion, &written);
    if (FAILED(result)) {
        return result;
    }
    if (written != sizeof kWrittenVersion) {
        return STG_E_MEDIUMFULL;
    }
    if (clear_dirty) {
        is_dirty_ = false;
    }
    return S_OK;
}

HRESULT ControlBase::LoadControl(IStream& stream) {
    DWORD version = 0;
    ULONG read = 0;
    const HRESULT result = stream.Read(&version, sizeof version, &read);
    if (FAILED(result)) {
        return result;
    }
    if (read != sizeof version || version == 0 || version > kNewestVersion) {
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
