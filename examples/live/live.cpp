// Moves a mouth while audio comes in: one thread pushes samples, as a sound card's callback would,
// and another draws 60 frames a second, a quarter of a second later.
// usage: live DATA_FOLDER AUDIO.wav [SECONDS]      (16-bit mono at 16 kHz)
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <tessarin/tessarin.h>

namespace {

using namespace std::chrono;

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The sound card: 10 ms of samples every 10 ms.
void Push(tessarin::IRealtimePhnRecognizer& recognizer, const std::string& samples) {
    constexpr size_t kBlock = 320;
    const auto begin = steady_clock::now();
    for (size_t i = 0; i + kBlock <= samples.size(); i += kBlock) {
        std::this_thread::sleep_until(begin + milliseconds(10 * (i / kBlock + 1)));
        recognizer.WriteBytes(samples.data() + i, kBlock);
    }
}

/// The animation: takes what was heard, and shows how the mouth is at its place in time.
void Draw(tessarin::IRealtimePhnRecognizer& recognizer, int frames) {
    constexpr int kDelayMs = 60;   // of the search: what it flushes is at least that old
    constexpr int kBehindMs = 250; // of the mouth: twice the search's delay, and what sounds need
    tessarin::ISyncResultsCollection *heard, *timeline;
    tessarin::IPhnMixtureArticulator* mouth;
    CreateSyncResultsCollection(tessarin::kPostProcessScores, &heard);
    CreateSyncResultsCollection(0, &timeline); // a long show would drop what is past now and then
    CreatePhonemeArticulator(&mouth, 0);
    mouth->SetFrameRate(60);
    int heardMs = 0;
    const auto begin = steady_clock::now();
    for (int frame = 0; frame < frames; ++frame) {
        std::this_thread::sleep_until(begin + microseconds(1000000 / 60 * frame));
        if (recognizer.GetMicVisemix(heard, kDelayMs)) {
            const int from = heard->begin()->start; // times count from the flush
            for (tessarin::CSyncMarker* m = heard->begin(); m != heard->end(); ++m) {
                tessarin::CSyncMarker placed = *m;
                placed.start += heardMs - from;
                placed.end += heardMs - from;
                timeline->add_marker(placed);
            }
            heardMs = (timeline->end() - 1)->end;
        }
        const int now = frame * 1000 / 60 - kBehindMs;
        if (now < 0 || mouth->GenerateArticulations2(timeline, nullptr, now, now) != 0) {
            continue;
        }
        for (auto* a = mouth->GetArticulationsBegin(); a != mouth->GetArticulationsEnd(); ++a) {
            if (a->start <= now && now < a->end) { // the weights go to the face; here to a bar
                const auto length = static_cast<size_t>(a->entries[0].weight * 40);
                std::printf("%6d  %-2s %s\n", now, a->entries[0].label,
                            std::string(length, '#').c_str());
            }
        }
    }
    DestroyPhonemeArticulator(mouth);
    DestroySyncResultsCollection(timeline);
    DestroySyncResultsCollection(heard);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: live DATA_FOLDER AUDIO.wav [SECONDS]\n", stderr);
        return 1;
    }
    const std::string image = Content(std::string(argv[1]) + "/en-us.model");
    const std::string samples = Content(argv[2]).substr(44); // after the header
    const int seconds = argc > 3 ? std::atoi(argv[3]) : static_cast<int>(samples.size() / 32000);
    tessarin::CAccousticHMM* model = nullptr;
    tessarin::IRealtimePhnRecognizer* recognizer = nullptr;
    int code = CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model);
    if (code == 0) {
        code = CreateRealtimePhnRecognizer(16000, 16, 1, 0, model, &recognizer);
    }
    if (code == 0) {
        code = recognizer->Start();
    }
    if (code == 0) {
        const size_t heard = std::min(samples.size(), static_cast<size_t>(seconds) * 32000);
        std::thread card([&] { Push(*recognizer, samples.substr(0, heard)); });
        Draw(*recognizer, seconds * 60);
        card.join();
    }
    std::puts(GetVisemixErrorMessage(code));
    DestroyRealtimePhnRecognizer(recognizer);
    DestroyAccHMM(model);
    return code;
}
