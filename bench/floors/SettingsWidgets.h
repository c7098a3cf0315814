#pragma once

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>

namespace floors {

// Controls of the same kinds as in the settings window, with a list of ten mice, in a window of the same size. They
// have no effect.
class SettingsWidgets : public QWidget {
  public:
    SettingsWidgets() {
        setWindowTitle("BLE-kovra");
        setFixedSize(440, 480);
        auto* column = new QVBoxLayout(this);
        column->addWidget(headline());
        column->addWidget(new QCheckBox("Mute trackpad"));
        column->addWidget(new QRadioButton("Always"));
        auto* chosen = new QRadioButton("While a mouse is connected");
        chosen->setChecked(true);
        column->addWidget(chosen);
        column->addWidget(line());
        auto* explanation = new QLabel(
            "The trackpad is muted while any of the chosen mice is connected, and comes back "
            "two seconds after the last of them has gone.");
        explanation->setWordWrap(true);
        column->addWidget(explanation);
        column->addWidget(devices());
        column->addWidget(line());
        column->addWidget(new QLabel("Trackpad active"));
        auto* author = new QLabel("<a href=\"mailto:nobody@example.org\">nobody@example.org</a>");
        author->setAlignment(Qt::AlignHCenter);
        column->addWidget(author);
    }

  private:
    static QWidget* headline() {
        auto* label = new QLabel("Mutes the trackpad while a mouse is connected");
        QFont font = label->font();
        font.setBold(true);
        label->setFont(font);
        return label;
    }
    static QWidget* line() {
        auto* frame = new QFrame;
        frame->setFrameShape(QFrame::HLine);
        return frame;
    }
    static QWidget* devices() {
        auto* list = new QWidget;
        auto* column = new QVBoxLayout(list);
        for (int number = 1; number <= 10; ++number) column->addWidget(new QCheckBox(QString("Mouse %1").arg(number)));
        auto* area = new QScrollArea;
        area->setMaximumHeight(200);
        area->setWidgetResizable(true);
        area->setWidget(list);
        return area;
    }
};

}  // namespace floors
