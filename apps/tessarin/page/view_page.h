#pragma once

#include <string>
#include <vector>

#include "apps/tessarin/page/page_audio.h"
#include "apps/tessarin/timed_result.h"

/// What is built into the tool from apps/tessarin/page.
struct view_sources {
    const char* page; ///< with {{NAME}} where a part belongs
    const char* style;
    const char* script;
    const char* mouth;
    const char* shapes; ///< JSON of the shapes that the mouth is drawn by
};
extern const view_sources kViewSources;

/// The page that shows a recording and what was found in it: one file that fetches nothing. `title`
/// is UTF-8, `json` a result as WriteJson writes it, which the page carries as it is.
std::string MakeViewPage(const std::string& title, const std::string& json,
                         const page_audio& audio);

/// Throws Failure, which names `path`, for a text that is not a result the page can show.
void RequireShowableJson(const std::string& path, const std::string& json);

/// The frames of a result that the page can show. Throws Failure, which names `path`, for times
/// that no recording has.
std::vector<mouth_frame> ReadShownFrames(const std::string& path, const std::string& json);
