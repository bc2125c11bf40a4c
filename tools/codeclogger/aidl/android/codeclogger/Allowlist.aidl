// SPDX-License-Identifier: Apache-2.0
package android.codeclogger;

/** The packages whose frame drops are mitigated: those in packages that are not in exceptions. */
parcelable Allowlist {
    /** What the list is, for people; may be empty. */
    @utf8InCpp String label;
    /** Names; one that ends with "*" stands for all that begin alike. */
    @utf8InCpp List<String> packages;
    @utf8InCpp List<String> exceptions;
}
