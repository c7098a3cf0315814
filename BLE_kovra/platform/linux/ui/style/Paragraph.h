#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>
#include <string>

class QColor;
class QPainter;
class QRect;

namespace kovra {

// Returns the text of a view as one paragraph. Line feeds and other control characters, which the name of a device may
// contain, become spaces.
QString plainText(const std::string& text);

// A plain text that wraps between words, or within a word that is too long. It is never truncated.
class Paragraph {
  public:
    // Returns whether the text or the font changed.
    bool set(const QString& text, const QFont& font);
    const QString& text() const { return text_; }

    // In pixels: preferredWidth() returns the width of the whole text in one line. minimumWidth() returns that of six
    // average letters, but at most preferredWidth().
    int preferredWidth() const { return preferredWidth_; }
    int minimumWidth() const { return minimumWidth_; }
    int heightForWidth(int width);
    void paint(QPainter& painter, const QRect& rect, const QColor& color);

  private:
    void layOut(int width);

    QString text_;
    QFont font_;
    QTextLayout layout_;
    int preferredWidth_ = 0;
    int minimumWidth_ = 0;
    int width_ = -1;  // of the current layout
    int height_ = 0;
};

}  // namespace kovra
