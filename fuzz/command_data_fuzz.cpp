#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "base/little_endian.h"
#include "commands/feature_stream.h"
#include "commands/quib_accoustic_cmd_ctrl.h"

using namespace tessarin;

namespace {

constexpr size_t kHeaderSize = 20;
constexpr uint64_t kMostBytes = 1 << 16;
constexpr uint32_t kMostMatchedFrames = 100;

/// A host hands over whole data: as many bytes as the header asks for, and no more, so that a read
/// after them is seen. Just the header, where it asks for more than anyone would give.
std::vector<uint8_t> WholeData(const uint8_t* data, size_t size) {
    const uint64_t count = LoadLittleEndian<uint32_t>(data + 8);
    const uint64_t stride = LoadLittleEndian<uint32_t>(data + 16);
    const uint64_t wanted = count * stride * 4;
    std::vector<uint8_t> whole(data, data + kHeaderSize);
    if (count <= kMostBytes && wanted <= kMostBytes) {
        whole.insert(whole.end(), data + kHeaderSize, data + size);
        whole.resize(kHeaderSize + static_cast<size_t>(wanted));
    }
    return whole;
}

} // namespace

// The saved sample of an acoustic command.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < kHeaderSize) {
        return 0;
    }
    const std::vector<uint8_t> whole = WholeData(data, size);
    const auto count = LoadLittleEndian<uint32_t>(data + 8);
    const bool isCut = whole.size() == kHeaderSize && count > 0;
    if (isCut && count <= 1000000) {
        return 0; // the data would not be whole
    }
    auto* controller = new CQuibAccousticCmdCtrl;
    const uint32_t id = controller->AddCommandFromData(whole.data());
    if (id != 0) {
        std::vector<uint8_t> saved(controller->GetCommandData(id, nullptr));
        static_cast<void>(controller->GetCommandData(id, saved.data()));
        if (saved.size() != whole.size() ||
            !std::equal(saved.begin() + 8, saved.end(), whole.begin() + 8)) {
            std::abort();
        }
        CFeatureStream sample;
        CFeatureStream same;
        float distance = 0.0f;
        if (count <= kMostMatchedFrames && sample.LoadFrames(whole.data() + 8, 0.0f) &&
            same.LoadFrames(whole.data() + 8, 0.5f)) {
            sample.MatchStream(same, &distance);
        }
    }
    controller->Release();
    return 0;
}
