// From a type code to the one analyser for it.
#pragma once

#include "zat/zat.h"

namespace zat {

// Runs the analyser for record->type_code, if there is one.
void DispatchAnalyser(InfoRecord* record);

} // namespace zat
