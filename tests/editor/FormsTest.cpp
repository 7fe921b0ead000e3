// Every text that the window shows has an entry in each string table.
#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>

namespace {

QString contentOf(const QString& file)
{
    QFile opened(file);
    if (!opened.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.toStdString());
    return QString::fromUtf8(opened.readAll());
}

const QString kTree = QStringLiteral(CIF_TEST_DATA "/../");

QStringList filesOf(const char* folder, const char* pattern)
{
    QStringList files;
    for (QDirIterator all(kTree + folder, {pattern}, QDir::Files); all.hasNext();)
        files.append(all.next());
    return files;
}

// As a string table writes them.
QString escaped(QString key)
{
    return key.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

} // namespace

TEST(Forms, LackNoKey)
{
    QSet<QString> keys;
    const QStringList forms = filesOf("resources/forms", "*.ui");
    for (const QString& form : forms) {
        QXmlStreamReader xml(contentOf(form));
        while (!xml.atEnd())
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"string" &&
                xml.attributes().value("notr") != u"true")
                keys.insert(escaped(xml.readElementText()));
        EXPECT_FALSE(xml.hasError()) << form.toStdString();
    }
    ASSERT_TRUE(keys.contains("&Constrain proportions"));
    const QStringList sources = filesOf("editor", "*.cpp");
    // In one piece or in several on as many lines.
    // A key may be written in several pieces, one to a line.
    const QRegularExpression written(R"re(localizedString\(\s*"((?:[^"\\]|\\.|"\s*")*)")re");
    const QRegularExpression seam(R"re("\s*")re");
    for (const QString& source : sources)
        for (auto all = written.globalMatch(contentOf(source)); all.hasNext();)
            keys.insert(all.next().captured(1).remove(seam));
    ASSERT_TRUE(keys.contains("range end"));
    keys.remove({});
    for (const char* language : {"en", "de", "fr", "ja"}) {
        const QString table = contentOf(kTree + "resources/strings/" + language + ".po");
        for (const QString& key : keys) {
            const qsizetype at = table.indexOf("\nmsgid \"" + key + "\"\nmsgstr \"");
            EXPECT_TRUE(at >= 0 &&
                        !table.mid(at).startsWith("\nmsgid \"" + key + "\"\nmsgstr \"\"\n\n"))
                << language << ": " << key.toStdString();
        }
    }
}
