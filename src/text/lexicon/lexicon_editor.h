#pragma once

#include "base/counted_ptr.h"
#include "tessarin/lexicon_editor.h"
#include "tessarin/speak_dict.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

class CTranscriber;

/// A text of a record: a loan from the file's text block until it is replaced. Entries of a file
/// may share their texts, so that copies of all could take more memory than there is.
class record_text {
public:
    explicit record_text(std::string_view lent) : text(lent) {}

    std::string_view View() const { return text; }
    /// The text with a zero after it. The first call copies a loan; "" without memory.
    const char* ZeroTerminated();
    /// Replaces the text by a copy. Throws std::bad_alloc.
    void Copy(std::string_view newText);

private:
    std::string_view text;
    std::unique_ptr<char[]> own; ///< zero-terminated, or null while the text is a loan
};

class CPronRecord : public IPronunciationRecord {
public:
    /// The texts must outlive the record or be replaced.
    CPronRecord(std::string_view recordWord, std::string_view phonemes)
        : word(recordWord), pronunciation(phonemes) {}
    virtual ~CPronRecord() = default;

    const char* GetWord() override { return word.ZeroTerminated(); }
    const char* GetPronunciationText() override { return pronunciation.ZeroTerminated(); }
    int32_t SetPronunciationText(const char* text) override;

    /// Makes both texts the record's own. Throws std::bad_alloc.
    void CopyTexts();

    std::string_view Word() const { return word.View(); }
    std::string_view Pronunciation() const { return pronunciation.View(); }

private:
    record_text word;
    record_text pronunciation;
};

/// The sorted records of a lexicon file. To the transcriber of the file they are its lexicon.
class CLexiconEditor : public ILexiconEditor, public ISpeakDict {
public:
    CLexiconEditor();
    CLexiconEditor(const CLexiconEditor&) = delete;
    CLexiconEditor& operator=(const CLexiconEditor&) = delete;
    ~CLexiconEditor() override;

    int32_t Save(const char* path, ProgressSink* progress) override;
    IPronunciationRecord* FindRecord(const char* word, int32_t length, int32_t index) override;
    int32_t RemoveRecord(const char* word, const char* pronunciation) override;
    int32_t AddRecord(const char* word, const char* pronunciation) override;
    int32_t GetRulePronunciation(const char* word, char* buffer, int32_t size) override;
    IVisemixTranscriber* GetTranscriber() override;
    int32_t GetRecordCount() override;
    IPronunciationRecord* GetRecordAt(int32_t index) override;
    int32_t RemoveRedundantRecords() override;
    /// Reads the lexicon file of `size` bytes at `data`; called once.
    virtual int32_t Load(const void* data, uint32_t size);

    // The lexicon that the transcriber sees. It is not owned, so that Release does nothing.
    void Release() override {}
    bool LookupFirst(const char* word, int32_t length, char* out) override;
    bool GetPronunciation(const char* word, uint16_t length, int32_t index,
                          CPronunciationRec* record) override;

private:
    using record_list = std::vector<std::unique_ptr<CPronRecord>>;

    record_list::iterator FirstNotBelow(std::string_view word);
    CPronRecord* Find(std::string_view word, int32_t index);
    bool IsOnlyOfItsWord(size_t number) const;
    bool IsRedundant(const CPronRecord& record);
    std::vector<bool> FindRedundant();
    bool WriteText(ProgressSink* progress, std::string& text) const;

    std::unique_ptr<char[]> block; ///< the texts of the file
    record_list records;
    counted_ptr<CTranscriber> transcriber;
};

} // namespace tessarin
