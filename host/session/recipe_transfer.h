// Recipes: lists of tags with values. The driver moves the words and counters among them to or from
// the controller in one transfer. It has none for bits: they are written one by one, each
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
    int line = 0; // in the recipe's file, from 1 on; 0 if there is none
};

// The elements of each request of a download, in their order, which is that of the items. Throws as
// writeRanges() does.
std::vector<ElementRange> downloadRanges(const Session &session,
                                         const std::vector<RecipeItem> &items);

// The same of an upload: words and counters in the order of the items, then bits. Neighbours don't
// look alike, as far as that is cheaper than a check question (InStep).
std::vector<ElementRange> uploadRanges(const Session &session,
                                       const std::vector<RecipeItem> &items);

struct TransferResult {
    RequestResult result;
    int finished = 0;   // requests answered for certain
    int unsure = 0;     // requests after these that were sent
    int requests = 0;   // requests of the whole transfer
    QString failedName; // first element of the request that failed: "1#D108"
};

// Moves the items' values to the controller, in their order; after a request that fails nothing
// more is written.
TransferResult download(Session &session, const std::vector<RecipeItem> &items);

// Fills the items' values from the controller. On any result but Done they stay as they were. With
// bits it replaces the poll plan and the session's observers, as readNow() does.
TransferResult upload(Session &session, std::vector<RecipeItem> &items);

} // namespace kmr
