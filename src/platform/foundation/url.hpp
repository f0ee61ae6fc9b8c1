#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <vantorium/export.h>

namespace vantorium {

/// A URL that parsed (RFC 3986). Text with a blank, a control or a non-ASCII character, a "%" that is not an
/// escape, or nothing at all, is not a URL. Text without a scheme is a relative one.
class VANTORIUM_HOST_API URL {
 public:
  static std::optional<URL> parse(std::string_view text);

  /// The text as it was parsed.
  const std::string& absoluteString() const { return text_; }
  /// The scheme in lower case; empty for a relative URL.
  const std::string& scheme() const { return scheme_; }
  /// The host as written, without brackets or port; empty when there is none.
  const std::string& host() const { return host_; }
  /// The path with percent escapes decoded; query and fragment are not part of it.
  const std::string& path() const { return path_; }
  /// The extension of the path's last component, without its dot; empty when there is none.
  std::string pathExtension() const;

 private:
  URL() = default;
  std::string text_, scheme_, host_, path_;
};

/// Percent-encodes every byte but ASCII letters, digits and ! $ & ' ( ) * + , - . / : ; = ? @ _ ~. A "%" is
/// encoded again. None when the text is not UTF-8.
std::optional<std::string> urlEncodedString(std::string_view text);

/// The text with its percent escapes decoded; a "%" that starts no escape stays.
std::string percentDecoded(std::string_view text);

/// Likewise, but none when a "%" starts no escape or the result is not UTF-8.
std::optional<std::string> strictlyPercentDecoded(std::string_view text);

/// A "file:" URL for an absolute path.
VANTORIUM_HOST_API std::string fileURL(std::string_view path);

/// Likewise for a folder: relative references lead into it.
VANTORIUM_HOST_API std::string folderURL(std::string_view path);

/// A fresh random UUID: 36 characters, upper-case hexadecimal, 8-4-4-4-12. Any thread.
VANTORIUM_HOST_API std::string makeUUID();

}  // namespace vantorium
