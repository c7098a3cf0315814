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

// Radio buttons in a column beside their title. Updates that do not yet acknowledge the user's choice leave it
// unchanged.
class PickerElement : public Element {
  public:
    explicit PickerElement(const Site& site);

    void addTexts(QStringList& texts) const override;
    void addWidgets(std::vector<QWidget*>& widgets) const override;

  private:
    using RadioButton = LabelledButton<QRadioButton>;

    // An invisible group that gives the buttons a common name for screen readers.
    class Group : public QGroupBox {
      public:
        using QGroupBox::QGroupBox;

      private:
        void paintEvent(QPaintEvent*) override {}
    };

    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;
    void placeContent(const QRect& rect) override;

    void makeButtons();
    void userChose(const std::string& tag);
    void select(const std::string& tag);
    void updateFocusPolicies();
    int gap() const;

    Picker picker_;
    std::unique_ptr<Group> group_;
    std::unique_ptr<TextLabel> title_;
    std::vector<std::unique_ptr<RadioButton>> buttons_;  // one for each option, in the same order
    std::uint64_t lastChange_ = 0;                       // number of the user's last choice
};

}  // namespace kovra
