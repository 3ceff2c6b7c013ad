#include "host/tags/nearest.h"

#include <algorithm>
#include <vector>

namespace kmr {

namespace {

// The number of changes: optimal string alignment.
int distance(const QString &from, const QString &to)
{
    const auto width = static_cast<std::size_t>(to.size()) + 1;
    std::vector<int> beforeLast(width);
    std::vector<int> last(width);
    std::vector<int> row(width);
    for (std::size_t i = 0; i < width; ++i)
        last[i] = static_cast<int>(i);
    for (int i = 0; i < from.size(); ++i) {
        row[0] = i + 1;
        for (int j = 0; j < to.size(); ++j) {
            const auto at = static_cast<std::size_t>(j);
            const int replaced = last[at] + (from[i] == to[j] ? 0 : 1);
            row[at + 1] = std::min({replaced, last[at + 1] + 1, row[at] + 1});
            const bool isExchanged = i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j];
            if (isExchanged)
                row[at + 1] = std::min(row[at + 1], beforeLast[at - 1] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

} // namespace

QString nearest(const QString &typed, const QStringList &known)
{
    QString best;
    int least = std::max(1, static_cast<int>(typed.size()) / 3) + 1;
    for (const QString &word : known) {
        const int changes = distance(typed.toLower(), word.toLower());
        if (changes < least && changes < word.size()) {
            best = word;
            least = changes;
        }
    }
    return best;
}

QString didYouMean(const QString &typed, const QStringList &known)
{
    const QString meant = nearest(typed, known);
    return meant.isEmpty() ? QString() : QString(", did you mean \"%1\"?").arg(meant);
}

} // namespace kmr
