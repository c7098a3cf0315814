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
#include "BLE_kovra/platform/linux/ui/style/KeyCommand.h"
#include "BLE_kovra/platform/linux/ui/windows/KeyRequest.h"
#include "BLE_kovra/platform/linux/ui/windows/RefuseMaximizing.h"

namespace kovra {

// One of the alert's texts.
class TextView : public QLabel {
  public:
    explicit TextView(const std::string& text) : QLabel(QString::fromStdString(text)) {
        setTextFormat(Qt::PlainText);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        setContextMenuPolicy(Qt::NoContextMenu);  // the toolkit's menu is not translated
        setAlignment(Qt::AlignLeading | Qt::AlignTop);
    }

    // Makes the label as wide as its longest line, but wraps lines longer than `width` pixels.
    void wrapAt(int width) {
        setMinimumWidth(0);
        setWordWrap(false);
        const int natural = sizeHint().width();
        setWordWrap(true);
        setMinimumWidth(std::min(natural, width));
    }
};

namespace {

constexpr int charactersPerLine = 60;  // characters of average width; longer lines are hard to read
constexpr int iconLines = 4;           // height of the icon, in lines of text
constexpr int frameLines = 2;          // height of the window's frame, in lines of text
constexpr double shareOfScreen = 0.9;

class IconView : public QWidget {
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintPicture(painter, rect(), applicationIcon());
    }
};

// A button that passes the Return key on to the dialog. On some desktops the key would otherwise press the focused
// button.
class Button : public QPushButton {
    using QPushButton::QPushButton;
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            event->ignore();
        else
            QPushButton::keyPressEvent(event);
    }
};

// Returns the accessible object with which screen readers announce the window as an alert.
QAccessibleInterface* makeAccessibleAlert(const QString&, QObject* object) {
    auto* alert = dynamic_cast<AlertWindow*>(object);
    return alert == nullptr ? nullptr : new QAccessibleWidget(alert, QAccessible::AlertMessage);
}

}  // namespace

AlertWindow::AlertWindow(const Alert& alert, OnAnswered onAnswered, SendToResident send)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      onAnswered_(std::move(onAnswered)),
      send_(std::move(send)),
      icon_(new IconView),
      message_(new TextView(alert.messageText)),
      information_(new TextView(alert.informativeText)) {
    QAccessible::removeFactory(makeAccessibleAlert);
    QAccessible::installFactory(makeAccessibleAlert);  // the newest factory is queried first
    setWindowTitle("BLE-kovra");
    setWindowModality(Qt::WindowModal);  // for the window manager; there is no parent window
    setAccessibleName(message_->text());
    setAccessibleDescription(information_->text());
    QFont bold;
    bold.setBold(true);
    message_->setFont(bold);

    auto* texts = new QVBoxLayout;
    texts->addWidget(message_);
    texts->addWidget(information_);
    texts->addStretch();
    auto* row = new QHBoxLayout;
    row->addWidget(icon_, 0, Qt::AlignTop);
    row->addLayout(texts);
    auto* column = new QVBoxLayout(this);
    column->addLayout(row);
    column->addWidget(addButtons(alert.buttons));
    column->setSizeConstraint(QLayout::SetFixedSize);
    updateSizes();
}

QWidget* AlertWindow::addButtons(const std::vector<std::string>& titles) {
    auto* box = new QDialogButtonBox;
    for (std::size_t position = 0; position < titles.size(); ++position) {
        // Escape "&", which would mark a mnemonic key.
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

void AlertWindow::updateSizes() {
    const QFontMetrics metrics(font());
    const int gap = metrics.height() * 3 / 4;  // the usual spacing in dialogs
    layout()->setContentsMargins(gap, gap, gap, gap);
    layout()->setSpacing(metrics.height());
    layout()->itemAt(0)->layout()->setSpacing(gap);
    icon_->setFixedSize(iconLines * metrics.height(), iconLines * metrics.height());
    // Prefer longer lines to buttons below the edge of the screen.
    const QSize available = screen()->availableSize();
    const int tallest = available.height() - frameLines * metrics.height();
    int line = std::min(charactersPerLine * metrics.averageCharWidth(), available.width() / 2);
    wrapAt(line);
    const int widest = static_cast<int>(available.width() * shareOfScreen) - (layout()->totalSizeHint().width() - line);
    while (layout()->totalSizeHint().height() > tallest && line < widest) {
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
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) updateSizes();
    QDialog::changeEvent(event);
    refuseMaximizing(*this, *event);
}

// Ignores the repetitions of a held key, because the user may have pressed it before the alert appeared.
void AlertWindow::keyPressEvent(QKeyEvent* event) {
    if (event->isAutoRepeat()) return;
    const std::optional<KeyCommand> command = keyCommand(*event);
    if (!command)
        QDialog::keyPressEvent(event);
    else if (*command == KeyCommand::close)
        reject();
    else
        send_(request(*command));
}

}  // namespace kovra
