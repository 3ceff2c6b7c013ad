// What a person may have meant by a word that nobody knows.
#pragma once

#include <QString>
#include <QStringList>

namespace kmr {

// The one of `known` that takes the fewest changes to make of `typed`: a character inserted, left
// out, replaced, or two neighbours exchanged. Capitals count as small letters. Empty if more than a
// third of the characters would change.
QString nearest(const QString &typed, const QStringList &known);

// The same as the end of a message: ", did you mean \"station\"?", or nothing.
QString didYouMean(const QString &typed, const QStringList &known);

} // namespace kmr
