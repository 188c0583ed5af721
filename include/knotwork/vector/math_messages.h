// SPDX-License-Identifier: MIT
// The message catalogues behind the error codes, and their counted registration.
#pragma once

#include "knotwork/export.h"

/// One message: its severity unless the report sets one, and its printf format.
struct MathMessageEntry {
  unsigned defaultSeverity;  ///< 0 warning, 2 fatal
  const char* format;
};

/// A registered table of messages; a link of the process-wide list.
struct MathMessageCatalogue {
  unsigned id;                      ///< the top 4 bits of its codes
  const MathMessageEntry* entries;  ///< indexed by the low 12 bits of a code
  unsigned count;                   ///< kept for the reader: look-ups do not consult it
  MathMessageCatalogue* next;
};

/// @return the message of `code`, or null when its catalogue is not registered. The message index
/// is not checked against the catalogue's count.
KNOTWORK_API const MathMessageEntry* findMathMessage(unsigned short code);

/// Appends `catalogue` to the list, unless that very object is in it already.
KNOTWORK_API void registerCatalogue(MathMessageCatalogue& catalogue);

/// Takes the first catalogue with identifier `id` out of the list; it can be registered again.
KNOTWORK_API void unregisterCatalogue(unsigned id);

/// Keeps the vector and general messages (catalogue 3) registered while one of these lives.
class KNOTWORK_API VectorMessagesInit {
 public:
  VectorMessagesInit();
  ~VectorMessagesInit();
  VectorMessagesInit(const VectorMessagesInit&) = delete;
  VectorMessagesInit& operator=(const VectorMessagesInit&) = delete;
};

/// Keeps the matrix messages (catalogue 4) registered while one of these lives.
class KNOTWORK_API RWMATXInit {
 public:
  RWMATXInit();
  ~RWMATXInit();
  RWMATXInit(const RWMATXInit&) = delete;
  RWMATXInit& operator=(const RWMATXInit&) = delete;
};

/// Keeps the factorisation messages (catalogue 5) registered while one of these lives.
class KNOTWORK_API FactorMessagesInit {
 public:
  FactorMessagesInit();
  ~FactorMessagesInit();
  FactorMessagesInit(const FactorMessagesInit&) = delete;
  FactorMessagesInit& operator=(const FactorMessagesInit&) = delete;
};
