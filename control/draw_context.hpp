// What a control draws on.
#pragma once

#include <windows.h>

namespace paylodge {

struct DrawContext {
    HDC dc;
    // Where the control is to draw, in the logical units of dc.
    RECTL bounds;
};

}  // namespace paylodge
