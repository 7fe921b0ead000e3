// Small widgets of the editor's form that the toolkit has not quite.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QToolButton>

namespace editor {

// As wide as its widest page, so that nothing moves sideways, but only as high as the one shown.
class PageStack final : public QStackedWidget {
    Q_OBJECT

public:
    explicit PageStack(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
};

// Scrolls up and down only: never narrower than what it holds and the scroll bar.
class ColumnScrollArea final : public QScrollArea {
    Q_OBJECT

public:
    explicit ColumnScrollArea(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
};

// A line or two of text with links, which open outside; as high as its text.
class LinkView final : public QTextBrowser {
    Q_OBJECT

public:
    explicit LinkView(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void resizeEvent(QResizeEvent* event) override;
};

// A flat button with one of the window's signs on it, in the colours of the text. Its text is for
// screen readers.
class GlyphButton final : public QToolButton {
    Q_OBJECT
    // The name of a sign, see drawGlyph. While the button is checked, or is not, the sign of that
    // name and " on" or " off" takes its place, if there is one.
    Q_PROPERTY(QString glyph READ glyph WRITE setGlyph)

public:
    explicit GlyphButton(QWidget* parent = nullptr);
    const QString& glyph() const { return _glyph; }
    void setGlyph(const QString& glyph);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString glyphOfState() const;

    QString _glyph;
};

// One of a few buttons side by side, of which the checked one stands out.
class SegmentButton final : public QPushButton {
    Q_OBJECT

public:
    explicit SegmentButton(QWidget* parent = nullptr);

protected:
    void initStyleOption(QStyleOptionButton* option) const override;
};

// A label on the side where the layout begins, whichever way its own text runs.
class FormLabel : public QLabel {
    Q_OBJECT

public:
    explicit FormLabel(QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void alignWithLayout();
};

// A thin line across.
class Separator final : public QWidget {
    Q_OBJECT

public:
    explicit Separator(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {1, 1}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

// A line of text that ends in dots where there is too little room for it.
class StatusLabel final : public FormLabel {
    Q_OBJECT

public:
    using FormLabel::FormLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// Keeps its room while it is hidden, as it is to begin with.
class BusyView final : public QWidget {
    Q_OBJECT

public:
    explicit BusyView(QWidget* parent = nullptr);
};

} // namespace editor
