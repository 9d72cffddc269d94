#pragma once

struct tessarin_model;

namespace tessarin {

/// Sets `model.facts` to what the engine has read.
void CollectFacts(tessarin_model& model);

} // namespace tessarin
