#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"

#include <QAccessibleWidget>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/ui/style/ApplicationIcon.h"

namespace kovra {

// One of its texts.
class TextView : public QLabel {
  public:
    explicit TextView(const std::string& text) : QLabel(QString::fromStdString(text)) {
        setTextFormat(Qt::PlainText);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        setContextMenuPolicy(Qt::NoContextMenu);  // its words would be the toolkit's
        setAlignment(Qt::AlignLeading | Qt::AlignTop);
    }

    // As wide as its longest line, up to this many pixels; what is longer is wrapped.
    void wrapAt(int width) {
        setMinimumWidth(0);
        setWordWrap(false);
        const int natural = sizeHint().width();
        setWordWrap(true);
        setMinimumWidth(std::min(natural, width));
    }
};

namespace {

constexpr int charactersALine = 60;  // of average width: longer lines are hard to read
constexpr int iconLines = 4;         // lines of text that the icon is high
constexpr int frameLines = 2;        // and the window's frame, above and below
constexpr double shareOfScreen = 0.9;

class IconView : public QWidget {
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintPicture(painter, rect(), applicationIcon());
    }
};

// Some desktops have Return press the button that has the focus; here it is for the dialog alone.
class Button : public QPushButton {
    using QPushButton::QPushButton;
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            event->ignore();
        else
            QPushButton::keyPressEvent(event);
    }
};

// To a screen reader it is an alert.
QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* alert = dynamic_cast<AlertWindow*>(object);
    return alert == nullptr ? nullptr : new QAccessibleWidget(alert, QAccessible::AlertMessage);
}

}  // namespace

AlertWindow::AlertWindow(const Alert& alert, OnAnswered onAnswered)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                           Qt::WindowStaysOnTopHint),
      onAnswered_(std::move(onAnswered)),
      icon_(new IconView),
      message_(new TextView(alert.messageText)),
      information_(new TextView(alert.informativeText)) {
    QAccessible::removeFactory(makeAccessible);
    QAccessible::installFactory(makeAccessible);  // the newest is asked first
    setWindowTitle("BLE-kovra");
    setWindowModality(Qt::WindowModal);  // for the window manager; there is no window that it would belong to
    setAccessibleName(message_->text());
    setAccessibleDescription(information_->text());
    QFont bold;
    bold.setBold(true);
    message_->setFont(bold);

    auto* texts = new QVBoxLayout;
    texts->addWidget(message_);
    texts->addWidget(information_);
    texts->addStretch();
    auto* beside = new QHBoxLayout;
    beside->addWidget(icon_, 0, Qt::AlignTop);
    beside->addLayout(texts);
    auto* whole = new QVBoxLayout(this);
    whole->addLayout(beside);
    whole->addWidget(addButtons(alert.buttons));
    whole->setSizeConstraint(QLayout::SetFixedSize);
    measure();
}

QWidget* AlertWindow::addButtons(const std::vector<std::string>& titles) {
    auto* box = new QDialogButtonBox;
    for (std::size_t position = 0; position < titles.size(); ++position) {
        // No character marks a mnemonic.
        auto* button = new Button(QString::fromStdString(titles[position]).replace('&', QLatin1String("&&")));
        connect(button, &QPushButton::clicked, this, [this, position] { answer(position); });
        box->addButton(button, position == 0 ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
        button->setAutoDefault(false);
        if (position > 0) continue;
        button->setDefault(true);
        button->setFocus();
    }
    return box;
}

void AlertWindow::measure() {
    const QFontMetrics metrics(font());
    const int gap = metrics.height() * 3 / 4;  // as desktops space their dialogs
    layout()->setContentsMargins(gap, gap, gap, gap);
    layout()->setSpacing(metrics.height());
    layout()->itemAt(0)->layout()->setSpacing(gap);
    icon_->setFixedSize(iconLines * metrics.height(), iconLines * metrics.height());
    // Longer lines are better than buttons below the screen's edge.
    const QSize room = screen()->availableSize();
    const int highest = room.height() - frameLines * metrics.height();
    int line = std::min(charactersALine * metrics.averageCharWidth(), room.width() / 2);
    wrapAt(line);
    const int widest = static_cast<int>(room.width() * shareOfScreen) - (layout()->totalSizeHint().width() - line);
    while (layout()->totalSizeHint().height() > highest && line < widest) {
        line = std::min(line + metrics.averageCharWidth(), widest);
        wrapAt(line);
    }
}

void AlertWindow::wrapAt(int width) {
    message_->wrapAt(width);
    information_->wrapAt(width);
}

void AlertWindow::answer(std::optional<std::size_t> button) {
    if (!isVisible()) return;
    hide();
    onAnswered_(button);
}

void AlertWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) measure();
    QDialog::changeEvent(event);
}

// A key that is held, as from before the alert came up, answers nothing.
void AlertWindow::keyPressEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat()) QDialog::keyPressEvent(event);
}

}  // namespace kovra
