// Recipe files: text with one line for each tag:
//
//     # mixer, recipe 7
//     tag,value
//     D100,250
//     D110x3,1 2 3
//     CV2200,70000
//
// The heading is optional; empty lines and lines that begin with '#' are skipped. A text with
// commas needs quotes. For an upload the values may be missing. No element may be in two lines.
// Nothing may follow the values: half of a number with a decimal comma could be taken for a
// comment.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/session/recipe_transfer.h"

#include <QString>

#include <vector>

namespace kmr {

// Needed: each line must have the values of its tag. Ignored: one field after the tag may hold
// anything or be missing; several fields must be the values of the tag, as with Needed.
enum class RecipeValues { Needed, Ignored };

// Reads a recipe file's text. Throws Error (Usage) that names every bad line with its number;
// `name` is the file's name in the error.
std::vector<RecipeItem> parseRecipe(const QString &text, const QString &name,
                                    const NamedTagReader &reader, RecipeValues values);

// The recipe of these tags, without values. Throws Error (Usage) for a tag that can't be written,
// and for an element that is in two tags.
std::vector<RecipeItem> recipeOf(const std::vector<Tag> &tags);

// The items as a recipe file's text.
QString formatRecipe(const std::vector<RecipeItem> &items);

// The text of a recipe file with new values of the items that were read from it. Everything else
// stays as it is.
QString withValues(const QString &text, const std::vector<RecipeItem> &items);

} // namespace kmr
