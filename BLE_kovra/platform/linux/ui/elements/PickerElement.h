#pragma once

#include <QGroupBox>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"
#include "BLE_kovra/platform/linux/ui/elements/TextElement.h"

namespace kovra {

// Radio buttons, one below the other, beside their title. What the user chose stands until a view comes that knows of
// that choice.
class PickerElement : public Element {
  public:
    explicit PickerElement(const Site& site);

    void addTexts(QStringList& texts) const override;
    void addWidgets(std::vector<QWidget*>& widgets) const override;

  private:
    using RadioButton = LabelledButton<QRadioButton>;

    // To screen readers a group with a name, to the eye nothing.
    class Group : public QGroupBox {
      public:
        using QGroupBox::QGroupBox;

      private:
        void paintEvent(QPaintEvent*) override {}
    };

    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override;
    Wish kindHeight(int width) override;
    void placeKind(const QRect& place) override;

    void makeButtons();
    void userChose(const std::string& tag);
    void choose(const std::string& tag);
    void chooseWhereTabStops();
    int gap() const;

    Picker picker_;
    std::unique_ptr<Group> group_;
    std::unique_ptr<TextLabel> title_;
    std::vector<std::unique_ptr<RadioButton>> buttons_;  // one an option, in their order
    std::uint64_t changed_ = 0;                          // the number of the user's last choice
};

}  // namespace kovra
