// Draws a recording's spectrum over time as a grey picture, the simplest that image programs read:
// a column for every 5 ms, a row for each bin of 32 ms of audio.
// usage: draw_spectrum AUDIO PICTURE.pgm
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <tessarin/tessarin.h>

namespace {

constexpr uint32_t kRateHz = 16000;
constexpr int32_t kFrame = 512;
constexpr int32_t kBins = kFrame / 2 + 1;

/// The display levels of the frame around each column, from low frequencies to high.
std::vector<std::vector<uint8_t>> Columns(tessarin::IPCMDataSource& audio,
                                          tessarin::ISpectralDataSource& spectra) {
    std::vector<std::vector<uint8_t>> columns;
    const int32_t step = audio.MsToSamples(5);
    for (int32_t start = 0; start + kFrame <= audio.GetNumSamples(); start += step) {
        std::vector<float> frame(kFrame);
        uint32_t count = kFrame;
        if (audio.ReadSamplesFloat(frame.data(), start, &count, 1) != 0 ||
            spectra.ComputeFrameFloat(frame.data(), kFrame, false, nullptr) != 0) {
            break;
        }
        columns.emplace_back(frame.begin(), frame.begin() + kBins); // each is 0 to 255
    }
    return columns;
}

bool WritePgm(const std::string& path, const std::vector<std::vector<uint8_t>>& columns) {
    std::ofstream file(path, std::ios::binary);
    file << "P5\n" << columns.size() << ' ' << kBins << "\n255\n";
    for (int32_t bin = kBins; bin-- > 0;) { // pictures begin at the top
        for (const auto& column : columns) {
            file.put(static_cast<char>(255 - column[static_cast<size_t>(bin)]));
        }
    }
    return file.good();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 1;
    }
    const tessarin::PCMFormat format = {kRateHz << 16, 16, 1};
    tessarin::IPCMDataSource* audio = nullptr;
    tessarin::ISpectralDataSource* spectra = nullptr;
    int32_t code = CreatePCMDataSource(argv[1], &format, nullptr, &audio);
    if (code == 0) {
        code = CreateSpectralDataSource(&spectra);
    }
    if (code == 0) {
        const auto columns = Columns(*audio, *spectra);
        std::printf("%s: %zu x %d\n", argv[2], columns.size(), kBins);
        code = WritePgm(argv[2], columns) ? 0 : tessarin::kWriteFailed;
    }
    if (code != 0) {
        std::fprintf(stderr, "%s\n", GetVisemixErrorMessage(code));
    }
    DestroySpectralDataSource(spectra);
    DestroyPCMDataSource(audio);
    return code;
}
