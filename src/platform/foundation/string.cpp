// SPDX-License-Identifier: MIT
// Foundation stand-in: shared text over std::string. The empty text needs no memory.
#include "knotwork/platform/foundation/string.h"

#include <charconv>
#include <string>
#include <utility>

#include "knotwork/platform/foundation/mt_ref_counter.h"

struct Tstring::Shared {
  TmtRefCounter owners;
  std::string text;
};

Tstring::Tstring() : shared_(nullptr) {}

Tstring::Tstring(const char* text) : shared_(text && *text ? new Shared{{}, text} : nullptr) {}

Tstring::Tstring(const Tstring& other) : shared_(other.shared_) {
  if (shared_) shared_->owners.increment();
}

Tstring& Tstring::operator=(const Tstring& other) {
  Tstring copy(other);
  std::swap(shared_, copy.shared_);
  return *this;
}

Tstring::~Tstring() { release(); }

void Tstring::release() {
  if (shared_ && shared_->owners.decrement() == 0) delete shared_;
}

const char* Tstring::asChar() const { return shared_ ? shared_->text.c_str() : ""; }

unsigned Tstring::length() const {
  return shared_ ? static_cast<unsigned>(shared_->text.length()) : 0;
}

Tstring& Tstring::setDouble(double value) {
  char digits[32];  // the longest shortest form has 24 characters
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits - 1, value);
  *end.ptr = '\0';
  return *this = Tstring(digits);
}

Tstring& Tstring::operator+=(const Tstring& other) {
  const std::string joined = std::string(asChar()) + other.asChar();
  return *this = Tstring(joined.c_str());
}

bool Tstring::operator==(const Tstring& other) const {
  return std::string_view(asChar()) == other.asChar();
}
