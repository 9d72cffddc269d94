#include "base/error_messages.h"

#include <atomic>

namespace tessarin {

namespace {

/// The text that was asked for last, for whoever looks at the process with a debugger.
constinit std::atomic<const char*> lastMessage = "Unknown error";

// The texts are part of the interface, to the letter: hosts compare and translate them.
const char* Text(error_code code) {
    switch (code) {
    case kNoError:
        return "No Error";
    case kOutOfMemory:
        return "Out of Memory";
    case kInvalidArgument:
        return "Sorry, the operation could not be completed because an argument was invalid.";
    case kOutOfRange:
        return "Sorry, the operation could not be completed. A specified value was out of range.";
    case kUserCancelled:
        return "User Cancelled";
    case kNotAvailable:
        return "Sorry, This functionality is not available in this product";
    case kRecognitionFailed:
        return "Recognition failed. Please compare the text transcription to the audio file to "
               "look for error. or increase the beam width";
    case kFileLocked:
        return "A file could not be opened because it is locked";
    case kFileNotFound:
        return "A required file could not be found.";
    case kFileInUse:
        return "A required file could not be opened because it is already open in another "
               "application";
    case kInvalidFile:
        // Kept: the text speaks of a WAV file though unreadable models and tables answer this code
        // too; hosts know that one code as "the data does not read".
        return "Sorry, the specified audio file is not a valid WAV file";
    case kCompressedFile:
        return "Sorry, this program cannot work with compressed WAV files";
    case kMissingComponent:
        return "Sorry, the specified audio file could not be converted because the a system "
               "component is missing";
    case kInvalidUtf8:
        return "Sorry, failed to convert text because it is invalid UTF8";
    case kException:
        return "Sorry, the operation could not be completed because an exception occurred.";
    default:
        return "Sorry, the operation could not be completed because an internal error occurred";
    }
}

} // namespace

const char* ErrorMessage(error_code code) {
    const char* text = Text(code);
    lastMessage.store(text, std::memory_order_relaxed);
    return text;
}

} // namespace tessarin
