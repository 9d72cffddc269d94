#pragma once

// The whole public surface.
#include "tessarin/acoustic_model.h"
#include "tessarin/articulator.h"
#include "tessarin/converted_text.h"
#include "tessarin/error_codes.h"
#include "tessarin/language_constraints.h"
#include "tessarin/lexicon_editor.h"
#include "tessarin/lexicon_file.h"
#include "tessarin/logging.h"
#include "tessarin/observation_stream.h"
#include "tessarin/pcm_stream.h"
#include "tessarin/progress_sink.h"
#include "tessarin/speak_dict.h"
#include "tessarin/sync_results.h"
#include "tessarin/text_based_recognizer.h"
#include "tessarin/textless_recognizer.h"
#include "tessarin/transcriber.h"
