#include <emscripten/emscripten.h>

#include "tessarin/tessarin_c.h"

extern "C" {

/// Of the page: a phase begins, or `done` of `total` steps are done. Not 0 cancels the search.
int32_t tessarin_js_progress(uint32_t done, uint32_t total);

/// Passes on to the page how a search goes.
EMSCRIPTEN_KEEPALIVE const tessarin_progress* tessarin_js_get_progress() {
    static const tessarin_progress kProgress{nullptr, nullptr,
                                             [](void*, uint32_t done, uint32_t total) -> int32_t {
                                                 return tessarin_js_progress(done, total);
                                             }};
    return &kProgress;
}
}
