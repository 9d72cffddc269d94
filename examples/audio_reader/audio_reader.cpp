// Teaches the engine a format of audio files: a reader that is installed is asked for every file
// that the built-in readers do not take. This one reads files of bare samples, `*.raw`: 16 bits,
// 16 kHz, one channel. usage: audio_reader DATA_FOLDER AUDIO.raw
#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <string>

#include <tessarin/tessarin.h>

namespace {

/// Counted: the engine gives its reference back when it is done with the file.
class RawStream final : public tessarin::IInstallableAudioStream {
public:
    explicit RawStream(const char* path) : file(path, std::ios::binary | std::ios::ate) {
        if (file) {
            byteLength = static_cast<uint32_t>(file.tellg()) / 2 * 2;
        }
    }
    bool IsOpen() const { return file.is_open(); }

    void GetFormat(tessarin::PCMFormat* out) override { *out = {16000u << 16, 16, 1}; }
    uint32_t GetSize() override { return byteLength; }
    int32_t Read(void* buffer, int32_t bytes) override {
        file.read(static_cast<char*>(buffer), bytes);
        return static_cast<int32_t>(file.gcount());
    }
    tessarin::error_code Start() override {
        file.clear();
        return file.seekg(0) ? tessarin::kNoError : tessarin::kInternalError;
    }
    int32_t AddRef() override { return ++references; }
    int32_t Release() override {
        const int32_t left = --references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

private:
    std::ifstream file;
    uint32_t byteLength = 0;
    int32_t references = 1; // the caller's
};

/// Lives as long as the program, so its references need no counting.
class RawReader final : public tessarin::IInstallableAudioFileReader {
public:
    uint32_t CanOpen(const char* path) override {
        const std::string name = path;
        return name.size() > 4 && name.compare(name.size() - 4, 4, ".raw") == 0;
    }
    tessarin::error_code OpenFile(const char* path,
                                  tessarin::IInstallableAudioStream** out) override {
        *out = nullptr;
        auto* stream = new (std::nothrow) RawStream(path);
        if (stream == nullptr) {
            return tessarin::kOutOfMemory;
        }
        if (!stream->IsOpen()) {
            stream->Release();
            return tessarin::kFileNotFound;
        }
        *out = stream;
        return tessarin::kNoError;
    }
    int32_t AddRef() override { return 1; }
    int32_t Release() override { return 1; }
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 1;
    }
    static RawReader reader;
    AddAudioFileFormatReader(&reader); // before other threads use the library

    std::ifstream file(std::string(argv[1]) + "/en-us.model", std::ios::binary);
    const std::string image{std::istreambuf_iterator<char>(file), {}};
    tessarin::CAccousticHMM* model = nullptr;
    tessarin::IObservationStream* observations = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::ITextlessPhnRecognizer* recognizer = nullptr;
    CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    CreateTextlessPhnRecognizer(&recognizer);
    int32_t code = CreateAccHMM(image.data(), uint32_t(image.size()), nullptr, &model);
    if (code == 0) {
        code = CreateObservationStreamFromAudioFile(argv[2], model, &observations);
    }
    if (code == 0) {
        code = recognizer->RecognizePhonemes(observations, model, nullptr, results);
    }
    std::printf("%d sounds: %s\n", results->size(), GetVisemixErrorMessage(code));
    DestroyTextlessPhnRecognizer(recognizer);
    DestroySyncResultsCollection(results);
    DestroyObservationStream(observations);
    DestroyAccHMM(model);
    RemoveAudioFileFormatReader(&reader);
    return code;
}
