// A picture of a control that outlives it.

#include <windows.h>

#include "com/owner.hpp"
#include "control/control_base.hpp"

namespace paylodge {
namespace {

struct MetafileTraits {
    using Type = HMETAFILE;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type metafile) noexcept { ::DeleteMetaFile(metafile); }
};
using Metafile = Owner<MetafileTraits>;

// A metafile that is being recorded. Only closing it frees its context.
struct MetafileRecordingTraits {
    using Type = HDC;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type dc) noexcept { Metafile(::CloseMetaFile(dc)); }
};
using MetafileRecording = Owner<MetafileRecordingTraits>;

// HIMETRIC units as pixels of the screen.
[[nodiscard]] SIZE Pixels(const SIZEL& size) noexcept {
    constexpr int kUnitsPerInch = 2540;
    const HDC screen = ::GetDC(nullptr);
    const SIZE pixels = {::MulDiv(size.cx, ::GetDeviceCaps(screen, LOGPIXELSX), kUnitsPerInch),
                         ::MulDiv(size.cy, ::GetDeviceCaps(screen, LOGPIXELSY), kUnitsPerInch)};
    ::ReleaseDC(nullptr, screen);
    return pixels;
}

// Takes the metafile over. Null without memory.
[[nodiscard]] HGLOBAL PackPicture(Metafile metafile, const SIZEL& size) noexcept {
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    if (memory == nullptr) {
        return nullptr;
    }
    auto* const picture = static_cast<METAFILEPICT*>(::GlobalLock(memory));
    *picture = {MM_ANISOTROPIC, size.cx, size.cy, metafile.Detach()};
    ::GlobalUnlock(memory);
    return memory;
}

}  // namespace

HRESULT ControlBase::RenderMetafile(HGLOBAL& picture) {
    MetafileRecording recording(::CreateMetaFileW(nullptr));
    if (!recording) {
        return E_OUTOFMEMORY;
    }
    const SIZE pixels = Pixels(extent_);
    // Whoever plays it sets the mapping mode and the size.
    ::SetWindowOrgEx(recording.Get(), 0, 0, nullptr);
    ::SetWindowExtEx(recording.Get(), pixels.cx, pixels.cy, nullptr);
    if (const HRESULT result = OnDraw({recording.Get(), {0, 0, pixels.cx, pixels.cy}}); FAILED(result)) {
        return result;
    }
    Metafile metafile(::CloseMetaFile(recording.Detach()));
    picture = metafile ? PackPicture(std::move(metafile), extent_) : nullptr;
    return picture == nullptr ? E_OUTOFMEMORY : S_OK;
}

}  // namespace paylodge
