// A button that shows a colour and, while it is active, takes the one of the shared colour panel.
#pragma once

#include "platform/foundation/Color.h"

#include <QAbstractButton>
#include <QPoint>
#include <QPointer>

#include <optional>

class QColorDialog;

namespace editor {

class ColorWell final : public QAbstractButton {
    Q_OBJECT

public:
    explicit ColorWell(QWidget* parent = nullptr);

    const std::optional<foundation::Color>& color() const { return _color; }
    // Sends no action. An active well's colour is the panel's too.
    void setColor(const std::optional<foundation::Color>& color);
    // "#3366CC", with the opacity when it is not full; empty without a colour.
    QString colorText() const;

    // One well at a time is active; a click makes it so and shows the panel, another one ends it.
    // It also ends when the panel is closed, and when the well is hidden or disabled.
    bool isActive() const;
    void activate();
    void deactivate();

    int tag = 0;

    QSize sizeHint() const override;

Q_SIGNALS:
    // The user asked for the colour it starts with, by Delete.
    void resetAction();
    // A colour was dropped on the well, which shows it already.
    void colorDropped(const foundation::Color& color);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    std::optional<foundation::Color> _color;
    QPoint _pressedAt;
    bool _isDropTarget = false;
};

// The one colour panel, with opacity.
class ColorPanel final : public QObject {
    Q_OBJECT

public:
    static ColorPanel& sharedColorPanel();
    ColorPanel();
    ~ColorPanel() override;

    foundation::Color color() const { return _color; }
    // Sends no change.
    void setColor(const foundation::Color& color);
    // setShowsAlpha:
    void setShowsAlpha(bool shows);
    // Above the owner's window, in whose modal run it can be used.
    void orderFront(QWidget* owner);
    bool isVisible() const;
    void close();
    // Made anew when the window that it belonged to took it along.
    QColorDialog& dialog();

    // The well that takes the colour; null for none.
    ColorWell* activeWell() const { return _activeWell; }

Q_SIGNALS:
    // changeColor: — by the user. The active well has it already.
    void colorDidChange(const foundation::Color& color);

private:
    friend class ColorWell;
    void setActiveWell(ColorWell* well);

    QPointer<QColorDialog> _dialog;
    QPointer<ColorWell> _activeWell;
    foundation::Color _color = foundation::Color::white();
    bool _showsAlpha = true;
};

} // namespace editor
