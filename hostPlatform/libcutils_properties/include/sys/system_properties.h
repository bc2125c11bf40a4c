// SPDX-License-Identifier: Apache-2.0
#pragma once

/** Bytes of a property's name, its NUL included. Longer names are accepted. */
#define PROP_NAME_MAX 32
/** Bytes of a property's value, its NUL included. */
#define PROP_VALUE_MAX 92
