#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/packed_file.h"
#include "tessarin/lexicon_file.h"
#include "text/lexicon/lexicon_editor.h"
#include "text/lexicon/lexicon_file.h"
#include "text/transcriber.h"

using namespace tessarin;

namespace {

constexpr int32_t kMostWords = 20;

/// Opens a file in both ways and uses what it holds.
void Open(std::span<const uint8_t> file) {
    const auto size = static_cast<uint32_t>(file.size());
    TranscriberInfo info = {};
    static_cast<void>(GetTranscriberInfo(file.data(), size, &info));
    IVisemixTranscriber* transcriber = nullptr;
    if (CreateTranscriberFromLexicon(file.data(), size, &transcriber) == kNoError) {
        transcriber->Transcribe("take at 21 <aux k=ta> $3.50");
    }
    DestroyTranscriber(transcriber);
    CLexiconEditor editor;
    if (editor.Load(file.data(), size) != kNoError) {
        return;
    }
    for (int32_t index = 0; index < kMostWords; ++index) {
        IPronunciationRecord* record = editor.GetRecordAt(index);
        if (record != nullptr) {
            editor.AddRecord(record->GetWord(), "AE");
            editor.FindRecord(record->GetWord(), 1, 0);
            editor.RemoveRecord(record->GetWord(), record->GetPronunciationText());
        }
    }
}

/// The file that stands in the input, with the bytes after its header packed, unless they are:
/// few changes of a packed block leave one.
std::vector<uint8_t> WithPackedPayload(std::span<const uint8_t> input) {
    TranscriberInfo info = {};
    const uint8_t* position = input.data();
    auto remaining = static_cast<uint32_t>(input.size());
    std::string infoString;
    std::vector<uint8_t> file(input.begin(), input.end());
    if (ReadLexiconHeader(&position, &remaining, &info, &infoString) != kNoError) {
        return file;
    }
    uint32_t packedSize = 0;
    const auto packed = PackBytes({position, remaining}, &packedSize);
    file.resize(input.size() - remaining);
    file.insert(file.end(), packed.get(), packed.get() + packedSize);
    return file;
}

} // namespace

// A lexicon file from outside, as it is and with its payload in the open.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Open({data, size});
    Open(WithPackedPayload({data, size}));
    return 0;
}
