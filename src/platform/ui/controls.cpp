#include "platform/ui/controls.hpp"

namespace vantorium::ui {

void Label::setText(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  setNeedsDisplay();
}

void Label::setTextColor(Color color) {
  color_ = color;
  setNeedsDisplay();
}

void Label::setFontSize(double points) {
  fontSize_ = points;
  setNeedsDisplay();
}

void Label::setBold(bool bold) {
  bold_ = bold;
  setNeedsDisplay();
}

void Label::setAlignment(TextAlignment alignment) {
  alignment_ = alignment;
  setNeedsDisplay();
}

void Label::setNumberOfLines(int lines) {
  lines_ = lines;
  setNeedsDisplay();
}

void ImageView::setImage(std::shared_ptr<const Image> image) {
  if (image == image_) return;
  image_ = std::move(image);
  setNeedsDisplay();
}

void ImageView::setHighlightedImage(std::shared_ptr<const Image> image) {
  highlightedImage_ = std::move(image);
  setNeedsDisplay();
}

void ImageView::setHighlighted(bool highlighted) {
  if (highlighted == highlighted_) return;
  highlighted_ = highlighted;
  setNeedsDisplay();
}

void ImageView::setContentMode(ContentMode mode) {
  mode_ = mode;
  setNeedsDisplay();
}

void Button::setTitle(std::string title) {
  if (title == title_) return;
  title_ = std::move(title);
  setNeedsDisplay();
}

void Button::setTitleColor(Color color) {
  titleColor_ = color;
  setNeedsDisplay();
}

void Button::setFontSize(double points) {
  fontSize_ = points;
  setNeedsDisplay();
}

void Button::setImage(ImageName normal, ImageName selected) {
  image_ = std::move(normal);
  selectedImage_ = std::move(selected);
  setNeedsDisplay();
}

void Button::setSelected(bool selected) {
  if (selected == selected_) return;
  selected_ = selected;
  setNeedsDisplay();
}

void Button::setHighlighted(bool highlighted) {
  if (highlighted == highlighted_) return;
  highlighted_ = highlighted;
  setNeedsDisplay();
}

void Button::handleTap() {
  if (isHidden()) return;
  // A copy: the action may take this button away.
  if (const auto action = action_) action();
}

}  // namespace vantorium::ui
