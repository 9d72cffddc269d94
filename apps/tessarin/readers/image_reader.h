#pragma once

#include <cstdint>
#include <string>

/// Little-endian numbers and zero-terminated texts from the front of a file's content. After the
/// first shortfall all reads fail and give zero or an empty text.
class ImageReader {
public:
    explicit ImageReader(const std::string& source) : bytes(source) {}

    uint32_t ReadU32() { return ReadNumber(4); }
    int32_t ReadI32() { return static_cast<int32_t>(ReadNumber(4)); }
    uint16_t ReadU16() { return static_cast<uint16_t>(ReadNumber(2)); }
    uint8_t ReadU8() { return static_cast<uint8_t>(ReadNumber(1)); }
    float ReadF32();
    std::string ReadString();

    void Skip(uint64_t count);
    void StepBack(size_t count) { place -= count; }

    void Fail() { failed = true; }
    bool Failed() const { return failed; }
    size_t Position() const { return place; }

private:
    uint32_t ReadNumber(size_t size);

    const std::string& bytes;
    size_t place = 0;
    bool failed = false;
};
