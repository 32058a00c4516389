// What the microphone check found, for people and for machines.
#ifndef KOVTOOLS_MICROPHONEREPORT_H
#define KOVTOOLS_MICROPHONEREPORT_H

#include <nlohmann/json.hpp>
#include <string>

#include "tools/audio/microphonecheck.h"

namespace kovtools {

// A line for each microphone, then one that sums up.
std::string checkText(const ArrayCheck& check);

// "3 of 208 microphones fail: 5 (silent), 17 (copy of 40), 30 (misplaced)".
std::string checkSentence(const ArrayCheck& check);

// `folder`: how it is to be named.
nlohmann::ordered_json checkJson(const ArrayCheck& check, const std::string& folder);

// "copy of 40" and the like; "ok" for a microphone without a fault.
std::string verdict(const MicrophoneResult& microphone);

}  // namespace kovtools

#endif
