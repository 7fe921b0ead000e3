// Searching by words, whatever their case, accents and order.
#pragma once

#include <QString>
#include <QStringList>

namespace editor {

// Without accents, in one case.
QString folded(const QString& text);
// The words of what was typed, folded.
QStringList searchWords(const QString& typed);
// All of the words, or their beginnings, ends or middles, are in the folded text.
bool hasWords(const QString& foldedText, const QStringList& words);

} // namespace editor
