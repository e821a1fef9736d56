// SPDX-License-Identifier: Apache-2.0
//
// Nothing: a library of this source has only what its target gives it, a run path and a library
// that it needs.
