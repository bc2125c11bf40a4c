// SPDX-License-Identifier: Apache-2.0
#pragma once

#define DISALLOW_EVIL_CONSTRUCTORS(name) \
    name(const name&);                   \
    name& operator=(const name&)
