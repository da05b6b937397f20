// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// Kinds of faults with their direction, such as "drop@reply", by what they may do to an upload.
namespace FaultClasses {

/// Every kind in both directions.
QStringList all();
/// Those that may end in a wrong firmware that is called complete: the sum of a frame may stay the
/// same when more than one of its bytes changes, and an acknowledgement does not say what it
/// acknowledges, so a doubled one credits a packet that has not arrived.
QStringList blind();
/// Those that change a request in one place, which the sum always shows; in two places at the same
/// time it may not.
QStringList changing();
/// All others.
QStringList other();

} // namespace FaultClasses
