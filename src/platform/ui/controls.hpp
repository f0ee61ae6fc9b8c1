#pragma once

#include <functional>
#include <memory>
#include <string>

#include <vantorium/export.h>

#include "platform/ui/image.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::ui {

enum class TextAlignment { left, center, right };

/// One or more lines of text, centred vertically, cut with an ellipsis where they do not fit.
class VANTORIUM_HOST_API Label : public View {
 public:
  using View::View;
  const char* className() const override { return "Label"; }

  const std::string& text() const { return text_; }
  void setText(std::string text);
  Color textColor() const { return color_; }
  void setTextColor(Color color);
  /// Of the system font, in points.
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  bool isBold() const { return bold_; }
  void setBold(bool bold);
  TextAlignment alignment() const { return alignment_; }
  void setAlignment(TextAlignment alignment);
  /// 0 for as many as fit.
  int numberOfLines() const { return lines_; }
  void setNumberOfLines(int lines);

 private:
  std::string text_;
  Color color_ = Color::black();
  double fontSize_ = 17;
  bool bold_ = false;
  TextAlignment alignment_ = TextAlignment::left;
  int lines_ = 1;
};

/// A file of the SDK's resource bundle ("icons/close.svg"). Empty for none.
using ImageName = std::string;

/// How a picture fills its view: letterboxed, or cropped.
enum class ContentMode { scaleAspectFit, scaleAspectFill };

class VANTORIUM_HOST_API ImageView : public View {
 public:
  using View::View;
  const char* className() const override { return "ImageView"; }

  /// The image of the present state; null for none.
  const std::shared_ptr<const Image>& image() const {
    return highlighted_ && highlightedImage_ ? highlightedImage_ : image_;
  }
  void setImage(std::shared_ptr<const Image> image);
  void setHighlightedImage(std::shared_ptr<const Image> image);
  bool isHighlighted() const { return highlighted_; }
  void setHighlighted(bool highlighted);
  ContentMode contentMode() const { return mode_; }
  void setContentMode(ContentMode mode);

  /// What loads the picture that is to be shown here; dropped when another is set, or with the view.
  void setImageTask(std::shared_ptr<void> task) { task_ = std::move(task); }

 private:
  std::shared_ptr<const Image> image_, highlightedImage_;
  bool highlighted_ = false;
  ContentMode mode_ = ContentMode::scaleAspectFit;
  std::shared_ptr<void> task_;
};

/// A control with a title, an image or both, that acts on taps, clicks and the keyboard.
class VANTORIUM_HOST_API Button : public View {
 public:
  using View::View;
  const char* className() const override { return "Button"; }

  const std::string& title() const { return title_; }
  void setTitle(std::string title);
  Color titleColor() const { return titleColor_; }
  void setTitleColor(Color color);
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  /// The image of the present state.
  const ImageName& image() const { return selected_ && !selectedImage_.empty() ? selectedImage_ : image_; }
  void setImage(ImageName normal, ImageName selected = {});
  bool isSelected() const { return selected_; }
  void setSelected(bool selected);
  bool isHighlighted() const { return highlighted_; }
  void setHighlighted(bool highlighted);

  /// What a tap does. One action; setting another replaces it.
  void setAction(std::function<void()> action) { action_ = std::move(action); }
  /// Calls the action, unless the button is hidden.
  void handleTap() override;

 private:
  std::string title_;
  Color titleColor_ = Color::white();
  double fontSize_ = 17;
  ImageName image_, selectedImage_;
  bool selected_ = false;
  bool highlighted_ = false;
  std::function<void()> action_;
};

}  // namespace vantorium::ui
