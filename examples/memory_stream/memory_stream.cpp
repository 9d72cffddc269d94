// Feeds audio that is in memory: a program that decodes audio itself gives the engine its samples
// through a stream of four operations. Here they come out of a WAV file.
// usage: memory_stream DATA_FOLDER AUDIO.wav
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <tessarin/tessarin.h>

namespace {

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// 16-bit mono samples in memory.
class MemoryStream final : public tessarin::IQuibPCMStream {
public:
    MemoryStream(const char* bytes, size_t size, uint32_t rateHz)
        : samples(bytes), byteLength(size), rate(rateHz) {}

    void GetFormat(tessarin::PCMFormat* out) override { *out = {rate << 16, 16, 1}; }
    uint32_t GetSize() override { return static_cast<uint32_t>(byteLength); }
    int32_t Read(void* buffer, int32_t bytes) override {
        const size_t count = std::min(byteLength - position, static_cast<size_t>(bytes));
        std::memcpy(buffer, samples + position, count);
        position += count;
        return static_cast<int32_t>(count); // 0 at the end
    }
    tessarin::error_code Start() override { // may be asked for again
        position = 0;
        return tessarin::kNoError;
    }

private:
    const char* samples;
    size_t byteLength;
    uint32_t rate;
    size_t position = 0;
};

int Recognize(tessarin::IQuibPCMStream& audio, tessarin::CAccousticHMM* model) {
    tessarin::IObservationStream* observations = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::ITextlessPhnRecognizer* recognizer = nullptr;
    CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    CreateTextlessPhnRecognizer(&recognizer);
    int32_t code = CreateObservationStreamFromQuibStream(&audio, model, &observations);
    if (code == 0) {
        code = recognizer->RecognizePhonemes(observations, model, nullptr, results);
    }
    for (const tessarin::CSyncMarker* m = results->begin(); m != results->end(); ++m) {
        std::printf("%s ", m->label);
    }
    std::printf("\n%d sounds: %s\n", results->size(), GetVisemixErrorMessage(code));
    DestroyTextlessPhnRecognizer(recognizer);
    DestroySyncResultsCollection(results);
    DestroyObservationStream(observations);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 1;
    }
    const std::string data = argv[1];
    const std::string image = Content(data + "/en-us.model");
    tessarin::CAccousticHMM* model = nullptr;
    int32_t code = CreateAccHMM(image.data(), uint32_t(image.size()), nullptr, &model);
    if (code != 0) {
        std::fprintf(stderr, "%s\n", GetVisemixErrorMessage(code));
        return code;
    }
    LoadTrigramFileIntoHMM(model, (data + "/en-us.trigrams").c_str(), 1);

    // The plainest of WAV files: a header of 44 bytes with the rate at byte 24.
    const std::string file = Content(argv[2]);
    if (file.size() > 44) {
        uint32_t rate = 0;
        std::memcpy(&rate, file.data() + 24, sizeof rate);
        MemoryStream audio(file.data() + 44, (file.size() - 44) / 2 * 2, rate);
        code = Recognize(audio, model);
    }
    DestroyAccHMM(model);
    return code;
}
