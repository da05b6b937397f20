// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultclasses.h"

#include "faultplan.h"

QStringList FaultClasses::all()
{
    static const QStringList kAll = [] {
        QStringList faults;
        for (int kind = Fault::Drop; kind <= Fault::HangUp; ++kind) {
            const QString name =
                QString::fromLatin1(FaultKind::of(static_cast<Fault::Kind>(kind)).name);
            faults << name + "@request" << name + "@reply";
        }
        return faults;
    }();
    return kAll;
}

QStringList FaultClasses::blind()
{
    // More than one byte of a packet changes.
    return {"burst@request", "half-frame@request", "insert-byte@request", "swap@request",
            // The size is acknowledged twice.
            "duplicate@request", "stale@request", "duplicate@reply", "stale@reply"};
}

QStringList FaultClasses::changing()
{
    return {"corrupt@request",       "drop-byte@request",    "flip@request",
            "foreign-type@request",  "trail@request",        "truncate@request",
            "wrong-command@request", "wrong-length@request", "wrong-parameter@request",
            "wrong-sum@request"};
}

QStringList FaultClasses::other()
{
    static const QStringList kOther = [] {
        QStringList faults;
        const QStringList every = all();
        for (const QString &fault : every) {
            if (!blind().contains(fault) && !changing().contains(fault)) {
                faults << fault;
            }
        }
        return faults;
    }();
    return kOther;
}
