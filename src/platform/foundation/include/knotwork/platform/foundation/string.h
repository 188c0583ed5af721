// SPDX-License-Identifier: MIT
// Foundation stand-in: text that is passed by value, its characters shared between copies.
#pragma once

#include "knotwork/platform/foundation/export.h"

/// A text. Copies share the characters until one of them is changed, so passing one allocates
/// nothing.
class KNOTWORK_FOUNDATION_API Tstring {
 public:
  /// The empty text.
  Tstring();

  /// @param text  null-terminated characters, copied; null means the empty text.
  Tstring(const char* text);  // NOLINT(google-explicit-constructor): texts convert, as everywhere

  Tstring(const Tstring& other);
  Tstring& operator=(const Tstring& other);
  ~Tstring();

  /// @return the characters, null-terminated and never null; valid until this text changes.
  [[nodiscard]] const char* asChar() const;

  /// @return the number of characters.
  [[nodiscard]] unsigned length() const;

  /// Makes the text the shortest decimal that reads back as `value` ("0.1", "1e+300", "nan").
  /// @return this text.
  Tstring& setDouble(double value);

  /// Appends. @return this text.
  Tstring& operator+=(const Tstring& other);

  /// @return whether both hold the same characters.
  bool operator==(const Tstring& other) const;

 private:
  struct Shared;
  void release();

  Shared* shared_;  // null for the empty text
};
