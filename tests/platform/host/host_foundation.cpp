// SPDX-License-Identifier: MIT
#include "host_foundation.h"

long long HostObject::alive = 0;
Tmetaclass TexceptionTmeta("Texception", {}, nullptr);
