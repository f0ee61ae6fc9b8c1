#pragma once

#include <span>

/// One story of the newspaper, all of it invented.
struct Article {
  const char* picture;  ///< a file of pictures/, without ".svg"
  const char* section;
  const char* title;
  const char* summary;
  const char* author;
  const char* text;  ///< paragraphs, an empty line between them
};

/// Today's issue, in the order of the feed.
std::span<const Article> articles();
