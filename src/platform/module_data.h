#pragma once

#include <cstdint>
#include <span>

namespace tessarin {

/// Read-only data that the linker put into `module`, which must be loaded already; null stands for
/// the program itself. Empty when it is not there. Where the system has no resources of its own,
/// the data are the bytes at the exported symbol `tessarin_<type>_<name>`, and their number is the
/// uint32_t at the same symbol with `_size` after it.
std::span<const uint8_t> FindModuleData(const char* module, const char* type, const char* name);

} // namespace tessarin
