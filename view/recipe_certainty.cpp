#include "view/recipe_certainty.h"

namespace kmr {

std::vector<Certainty> certaintyOf(const std::vector<RecipeItem> &items,
                                   const std::vector<ElementRange> &runs,
                                   const TransferResult &result)
{
    using Outcome = RequestResult::Outcome;
    const bool isUnknown =
        result.result.outcome == Outcome::NoAnswer || result.result.outcome == Outcome::Unknown;
    const int certain = result.finished;
    const int sent = certain + (isUnknown ? result.unsure : 0);
    std::vector<Certainty> certainties;
    for (const RecipeItem &item : items) {
        bool isWritten = false;
        bool isMissing = false;
        bool isDoubtful = false;
        for (int i = 0; i < static_cast<int>(runs.size()); ++i) {
            if (!overlap(runs[static_cast<std::size_t>(i)], item.tag.elements))
                continue;
            isWritten = isWritten || i < certain;
            isDoubtful = isDoubtful || (i >= certain && i < sent);
            isMissing = isMissing || i >= sent;
        }
        certainties.push_back(isDoubtful               ? Certainty::Unknown
                              : isWritten && isMissing ? Certainty::InPart
                              : isWritten              ? Certainty::Written
                                                       : Certainty::NotWritten);
    }
    return certainties;
}

} // namespace kmr
