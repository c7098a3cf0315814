#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>
#include <string>

class QColor;
class QPainter;
class QRect;

namespace kovra {

// A view's text as a string of the toolkit: plain, and one paragraph. Line feeds and other control characters, which a
// device's name may have, become blanks.
QString plainText(const std::string& text);

// A plain text that wraps, between words where it can, anywhere where a word is too long. It is never cut.
class Paragraph {
  public:
    // True when it differs from what was set before.
    bool set(const QString& text, const QFont& font);
    const QString& text() const { return text_; }

    // With all in one line, in pixels.
    int idealWidth() const;
    // A few letters.
    int leastWidth() const;
    int heightFor(int width);
    void paint(QPainter& painter, const QRect& place, const QColor& color);

  private:
    void layOut(int width);

    QString text_;
    QFont font_;
    QTextLayout layout_;
    int idealWidth_ = 0;
    int leastWidth_ = 0;
    int width_ = -1;  // that it is laid out for
    int height_ = 0;
};

}  // namespace kovra
