#include "host/host_without_type_information.h"

namespace {

using tessarin::error_code;

class PlainStream final : public tessarin::IObservationStream {
public:
    uint32_t GetNumObservations() override { return 50; }
    error_code GetObservation(float* features, float* energy) override {
        *features = 0.0f;
        *energy = 0.0f;
        return tessarin::kNoError;
    }
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override {
        *windowSize = 320;
        *overlap = 160;
    }
    float GetSampleRate() override { return 16000.0f; }
    void GetEnergyRange(float* minimum, float* maximum) override { *minimum = *maximum = 0.0f; }
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float*, uint32_t*) override { return tessarin::kNotAvailable; }
    error_code SetNoiseFloor(uint32_t, const float*, int32_t) override {
        return tessarin::kNotAvailable;
    }
};

class PlainCollection final : public tessarin::ISyncResultsCollection {
public:
    void set_flags(uint32_t) override {}
    uint32_t get_flags() override { return 0; }
    int32_t size() override { return 0; }
    tessarin::CSyncMarker* begin() override { return nullptr; }
    tessarin::CSyncMarker* end() override { return nullptr; }
    void clear() override {}
    void add_marker(const tessarin::CSyncMarker&) override {}
};

class PlainProgress final : public tessarin::ProgressSink {
public:
    void SetStatus(const char*) override {}
    bool OnProgress(uint32_t, uint32_t) override { return false; }
};

} // namespace

plain_host MakePlainHost() {
    return {std::make_unique<PlainStream>(), std::make_unique<PlainCollection>(),
            std::make_shared<PlainProgress>()};
}
