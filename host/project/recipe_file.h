// Recipe files: text, one line for each tag:
//
//     # mixer, recipe 7
//     tag,value
//     D100,250
//     D110x3,1 2 3
//     CV2200,70000
//
// The heading is optional, empty lines and those that begin with '#' are skipped. A text with
// commas needs quotes. For an upload the values may be missing. No element stands in two lines, and
// nothing after the values: half of a number with a decimal comma would pass for a remark.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/session/recipe_transfer.h"

#include <QString>

#include <vector>

namespace kmr {

// Ignored: what stands in the place of the values may be anything, but in more than one column only
// what is needed there.
enum class RecipeValues { Needed, Ignored };

// Reads a recipe file's text. Throws Error (Usage) that names every bad line with its number;
// `name` is the file's, for that text.
std::vector<RecipeItem> parseRecipe(const QString &text, const QString &name,
                                    const NamedTagReader &reader, RecipeValues values);

// The recipe of these tags, without values. Throws Error (Usage) for a tag that can only be read,
// and for an element that stands in two tags.
std::vector<RecipeItem> recipeOf(const std::vector<Tag> &tags);

// The items as a recipe file's text.
QString formatRecipe(const std::vector<RecipeItem> &items);

// The text of a recipe file with the values of the items that were read from it: all else stays as
// it is.
QString withValues(const QString &text, const std::vector<RecipeItem> &items);

} // namespace kmr
