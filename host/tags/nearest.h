// Suggestions for unknown words.
#pragma once

#include <QString>
#include <QStringList>

namespace kmr {

// The one of `known` with the fewest changes from `typed`: a character inserted, left out,
// replaced, or two neighbours exchanged. Case does not matter. Empty if more than a third of the
// characters would change.
QString nearest(const QString &typed, const QStringList &known);

// The same as the end of a message: ", did you mean \"station\"?", or empty.
QString didYouMean(const QString &typed, const QStringList &known);

} // namespace kmr
