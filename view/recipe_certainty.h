// What is known of each entry of a recipe after a download.
#pragma once

#include "host/session/recipe_transfer.h"

#include <vector>

namespace kmr {

enum class Certainty {
    Written,    // all of it, confirmed
    InPart,     // some of it for certain, the rest not
    Unknown,    // at least one request may have been carried out, or not
    NotWritten, // nothing of it was sent
};

// `runs`: downloadRanges() of the items, whose transfer ended as `result` says.
std::vector<Certainty> certaintyOf(const std::vector<RecipeItem> &items,
                                   const std::vector<ElementRange> &runs,
                                   const TransferResult &result);

} // namespace kmr
