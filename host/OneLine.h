// Texts of others in lines of ours.
#pragma once

#include <string>

namespace VLK::host {

// Up to `most` bytes and a character of a text in UTF-8, with its control characters
// written as "\u001B": nothing that ends the line or moves the cursor.
std::string OnOneLine(const std::string& text, size_t most = std::string::npos);

} // namespace VLK::host
