#include "apps/tessarin/readers/lexicon_summary.h"

#include <algorithm>

#include <zlib.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/image_reader.h"
#include "tessarin/owned.h"

namespace {

using tessarin::ILexiconEditor;

constexpr uint32_t kLexiconMagic = 0x44494354; // "TCID"
constexpr uint32_t kPackedMagic = 0x42514350;  // "PCQB"
constexpr uint64_t kMaxRatio = 1032;           // of what deflate can pack

constexpr int kFlagsVersion = 2;
constexpr int kKeyedTablesVersion = 3;
constexpr int kNumUnkeyedTables = 27;
constexpr uint16_t kWorksByTree = 1;

/// What stands in the packed block behind the header; empty when it does not unpack.
std::string UnpackPayload(const std::string& image, uint32_t headerFlags) {
    ImageReader reader(image);
    reader.Skip(6);
    reader.ReadString();
    reader.Skip(8);
    for (const uint32_t text : {tessarin::kLocaleStored, tessarin::kInfoStringStored}) {
        if ((headerFlags & text) != 0) {
            reader.ReadString();
        }
    }
    reader.Skip((headerFlags & tessarin::kCodePageKnown) != 0 ? 4 : 0);
    if ((headerFlags & tessarin::kCommentStored) != 0) {
        reader.ReadString();
    }
    const bool isPacked = reader.ReadU32() == kPackedMagic;
    uLongf size = reader.ReadU32();
    const size_t packedSize = image.size() - reader.Position();
    if (reader.Failed() || !isPacked || size > kMaxRatio * (packedSize + 1)) {
        return "";
    }
    std::string payload(size, '\0');
    const int code =
        uncompress(reinterpret_cast<Bytef*>(payload.data()), &size,
                   reinterpret_cast<const Bytef*>(image.data()) + reader.Position(), packedSize);
    return code == Z_OK ? payload : "";
}

size_t CountLeaves(ImageReader& reader) {
    constexpr uint8_t kLongText = 1;
    const uint8_t first = reader.ReadU8();
    if (first == kLongText) {
        reader.ReadString();
        return 1;
    }
    reader.Skip(1);
    if (first != 0 || reader.Failed()) {
        return 1;
    }
    reader.Skip(4); // what the node asks
    size_t leaves = 0;
    for (int branch = 0; branch < 2; ++branch) {
        leaves += reader.ReadU8() != 0 ? CountLeaves(reader) : 0;
    }
    return leaves;
}

size_t CountRules(ImageReader& reader, int version) {
    constexpr int kTextsOfRule = 4;
    const bool isKeyed = version >= kKeyedTablesVersion;
    size_t rules = 0;
    for (int table = isKeyed ? reader.ReadU16() : kNumUnkeyedTables; table > 0; --table) {
        reader.Skip(isKeyed ? 2 : 0);
        const auto rows = static_cast<int16_t>(reader.ReadU16());
        for (int text = 0; text < rows * kTextsOfRule && !reader.Failed(); ++text) {
            reader.ReadString();
        }
        rules += static_cast<size_t>(std::max<int16_t>(rows, 0));
    }
    return rules;
}

/// Reads the beginning of the language, which the engine has read before: no tree in it is deep.
bool ReadLanguage(const std::string& payload, lexicon_summary* summary) {
    ImageReader reader(payload);
    reader.Skip(4);
    summary->sectionVersion = static_cast<int16_t>(reader.ReadU16());
    reader.Skip(4);
    if (summary->sectionVersion >= kFlagsVersion) {
        summary->hasTree = (reader.ReadU16() & kWorksByTree) != 0;
        for (uint16_t left = reader.ReadU16(); left > 0; --left) {
            reader.Skip(1);
            reader.ReadString();
        }
    }
    if (summary->hasTree) {
        reader.Skip(uint64_t{2} * reader.ReadU16());
        summary->numLeaves = CountLeaves(reader);
    } else {
        summary->numRules = CountRules(reader, summary->sectionVersion);
    }
    return !reader.Failed();
}

bool IsSameLetter(char first, char second) {
    const auto folded = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return folded(first) == folded(second);
}

void CountEntries(ILexiconEditor& editor, lexicon_summary* summary) {
    summary->numEntries = static_cast<size_t>(editor.GetRecordCount());
    std::string previous;
    for (int32_t index = 0; index < editor.GetRecordCount(); ++index) {
        const std::string word = editor.GetRecordAt(index)->GetWord();
        summary->numWords +=
            index == 0 || !std::ranges::equal(word, previous, IsSameLetter) ? 1 : 0;
        previous = word;
    }
}

} // namespace

bool LooksLikeLexicon(const std::string& image) {
    return ImageReader(image).ReadU32() == kLexiconMagic;
}

lexicon_summary SummarizeLexicon(const std::string& path) {
    ILexiconEditor* opened = nullptr;
    const int32_t code = CreateLexiconEditor(path.c_str(), &opened);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    const tessarin::editor_owner editor(opened);
    const tessarin::transcriber_owner transcriber(editor->GetTranscriber());
    lexicon_summary summary;
    transcriber->getTranscriberInfo(&summary.info);
    uint32_t length = 0;
    const char* information = transcriber->GetInfoString(&length);
    summary.information.assign(information != nullptr ? information : "", length);
    CountEntries(*editor, &summary);

    const std::string image = ReadWholeFile(path);
    ImageReader reader(image);
    reader.Skip(4);
    summary.version = static_cast<int16_t>(reader.ReadU16());
    reader.ReadString();
    reader.Skip(4);
    if (!ReadLanguage(UnpackPayload(image, reader.ReadU32()), &summary)) {
        throw EngineFailure(path, tessarin::kInvalidFile);
    }
    return summary;
}

std::string DescribeLexicon(const lexicon_summary& summary) {
    std::string lines;
    const auto addLine = [&lines](const std::string& name, const std::string& value) {
        constexpr size_t kColumn = 17;
        if (!value.empty()) {
            lines += name + std::string(kColumn - name.size(), ' ') + value + "\n";
        }
    };
    const tessarin::TranscriberInfo& info = summary.info;
    addLine("lexicon", "version " + std::to_string(summary.version));
    addLine("name", info.name);
    addLine("language", std::to_string(info.language));
    addLine("code page", std::to_string(info.code_page));
    addLine("flags", std::to_string(info.flags));
    addLine("locale", info.locale);
    addLine("comment", info.comment);
    addLine("information", summary.information);
    addLine("entries", std::to_string(summary.numEntries) + " of " +
                           std::to_string(summary.numWords) + " words");
    addLine("other words",
            (summary.hasTree ? "decision tree of " + std::to_string(summary.numLeaves) + " leaves"
                             : std::to_string(summary.numRules) + " rules") +
                ", section version " + std::to_string(summary.sectionVersion));
    return lines;
}
