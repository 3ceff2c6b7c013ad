// Recipes: lists of tags with values. The driver moves their words and counters to or from the
// controller in one transfer. It has no transfer for bits: they are written one by one, each
// acknowledged before the next, and read in blocks.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QString>

#include <vector>

namespace kmr {

struct RecipeItem {
    Tag tag; // one that can be written
    Values values;
    int line = 0; // in the recipe file, from 1 on; 0 without a file
};

// The elements of each request of a download, in the order of the items. Throws the same as
// writeRanges().
std::vector<ElementRange> downloadRanges(const Session &session,
                                         const std::vector<RecipeItem> &items);

// The same for an upload: words and counters in the order of the items, then bits. Neighbours don't
// look alike, if that costs less than a check question (InStep).
std::vector<ElementRange> uploadRanges(const Session &session,
                                       const std::vector<RecipeItem> &items);

struct TransferResult {
    RequestResult result;
    int finished = 0;   // requests with a confirmed answer
    int unsure = 0;     // requests after these that were sent
    int requests = 0;   // requests of the whole transfer
    QString failedName; // first element of the request that failed: "1#D108"
};

// Writes the items' values to the controller, in their order. After a request that fails nothing
// more is written.
TransferResult download(Session &session, const std::vector<RecipeItem> &items);

// Fills the items' values from the controller. Unless the result is Done they stay as they were. If
// there are bits, it replaces the poll plan and the session's observers, as readNow() does.
TransferResult upload(Session &session, std::vector<RecipeItem> &items);

} // namespace kmr
