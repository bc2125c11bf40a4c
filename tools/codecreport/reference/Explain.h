// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "reference/Reference.h"

namespace android::codecreport {

/**
 * What a log line, field, history, report key, metrics record, property, cause, verdict or JSON key
 * means.
 *
 * @param key an id, a schema, the last part of a JSON key, or a whole line of a log or of the
 *     status text
 * @return empty if nothing is known by that key
 */
std::string explain(const Reference& reference, const std::string& key);

/** Ids that come near a key that is not known, with line ends; empty: none does. */
std::string suggest(const Reference& reference, const std::string& key);

/** Tables as Markdown: the one of this name, or all if it is empty; empty: there is none. */
std::string markdown(const Reference& reference, const std::string& name);

/** Names of the tables, with blanks between. */
std::string tableNames(const Reference& reference);

}  // namespace android::codecreport
