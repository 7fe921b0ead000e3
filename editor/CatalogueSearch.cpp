#include "editor/CatalogueSearch.h"

#include <algorithm>

namespace editor {

QString folded(const QString& text)
{
    // Compatible forms make one of letters of full and of half width, capitals two letters of ß.
    QString letters = text.normalized(QString::NormalizationForm_KD).toUpper().toCaseFolded();
    letters.removeIf([](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
    return letters;
}

QStringList searchWords(const QString& typed)
{
    return folded(typed).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool hasWords(const QString& foldedText, const QStringList& words)
{
    return std::ranges::all_of(words,
                               [&](const QString& word) { return foldedText.contains(word); });
}

} // namespace editor
