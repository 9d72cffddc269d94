#include "features/stream_without_type_information.h"

namespace tessarin::test {
namespace {

class PlainStream final : public IObservationStream {
public:
    uint32_t GetNumObservations() override { return 0; }
    error_code GetObservation(float*, float*) override { return kNotAvailable; }
    void GetFrameGeometry(uint32_t*, uint32_t*) override {}
    float GetSampleRate() override { return 0.0f; }
    void GetEnergyRange(float*, float*) override {}
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float*, uint32_t*) override { return kNotAvailable; }
    error_code SetNoiseFloor(uint32_t, const float*, int32_t) override { return kNotAvailable; }
};

} // namespace

std::unique_ptr<IObservationStream> MakeStreamWithoutTypeInformation() {
    return std::make_unique<PlainStream>();
}

} // namespace tessarin::test
