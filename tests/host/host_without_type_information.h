#pragma once

#include <memory>

#include "tessarin/tessarin.h"

/// What a host makes that is compiled without type information.
struct plain_host {
    std::unique_ptr<tessarin::IObservationStream> stream; ///< silence, half a second
    std::unique_ptr<tessarin::ISyncResultsCollection> collection;
    std::shared_ptr<tessarin::ProgressSink> progress;
};

plain_host MakePlainHost();
