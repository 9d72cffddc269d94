#include "c/transcriber_pool.h"

#include <string_view>

using tessarin::error_code;
using tessarin::transcriber_owner;

namespace {

constexpr std::string_view kLexiconMagic = "TCID";

} // namespace

error_code tessarin_language::MakeTranscriber(transcriber_owner& out) const {
    tessarin::IVisemixTranscriber* made = nullptr;
    const auto size = static_cast<uint32_t>(content.size());
    const error_code code =
        content.starts_with(kLexiconMagic)
            ? CreateTranscriberFromLexicon(content.data(), size, &made)
            : CreateDefaultTranscriber(content.data(), static_cast<int32_t>(size), &made);
    out.reset(made);
    return code;
}

error_code tessarin_language::Open() {
    transcriber_owner first;
    const error_code code = MakeTranscriber(first);
    if (code == tessarin::kNoError) {
        first->getTranscriberInfo(&info);
        idle.push_back(std::move(first));
    }
    return code;
}

error_code tessarin_language::Borrow(transcriber_owner& out) {
    {
        const std::lock_guard guard(lock);
        if (!idle.empty()) {
            out = std::move(idle.back());
            idle.pop_back();
            return tessarin::kNoError;
        }
    }
    return MakeTranscriber(out);
}

void tessarin_language::GiveBack(transcriber_owner transcriber) {
    const std::lock_guard guard(lock);
    idle.push_back(std::move(transcriber));
}
