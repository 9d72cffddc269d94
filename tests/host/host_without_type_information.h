#pragma once

#include <memory>

#include "tessarin/observation_stream.h"

namespace tessarin::test {

/// A stream of a host that is compiled without type information.
std::unique_ptr<IObservationStream> MakeStreamWithoutTypeInformation();

} // namespace tessarin::test
