// Recipes: lists of tags with values that the driver moves to or from the controller in one
// transfer.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QString>

#include <vector>

namespace kmr {

struct RecipeItem {
    Tag tag; // words or counters
    Values values;
    int line = 0; // in the recipe's file, from 1 on; 0 if there is none
};

// The elements of each request of a transfer, in their order. Throws as writeRanges() does.
std::vector<ElementRange> recipeRanges(const std::vector<RecipeItem> &items, int groupLimit);

struct TransferResult {
    RequestResult result;
    int finished = 0;   // requests answered for certain
    int unsure = 0;     // requests after these that were sent
    int requests = 0;   // requests of the whole transfer
    QString failedName; // first element of the request that failed: "1#D108"
};

// Moves the items' values to the controller through the driver's recipe transfer.
TransferResult download(Session &session, const std::vector<RecipeItem> &items);

// Fills the items' values from the controller. On any result but Done they stay as they were.
TransferResult upload(Session &session, std::vector<RecipeItem> &items);

} // namespace kmr
