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
            faults << name + QLatin1String("@request") << name + QLatin1String("@reply");
        }
        return faults;
    }();
    return kAll;
}

QStringList FaultClasses::blind()
{
    static const QStringList kBlind{
        // More than one byte of a packet changes.
        QStringLiteral("burst@request"),
        QStringLiteral("half-frame@request"),
        QStringLiteral("insert-byte@request"),
        QStringLiteral("swap@request"),
        // The size is acknowledged twice.
        QStringLiteral("duplicate@request"),
        QStringLiteral("stale@request"),
        QStringLiteral("duplicate@reply"),
        QStringLiteral("stale@reply"),
    };
    return kBlind;
}

QStringList FaultClasses::changing()
{
    static const QStringList kChanging{
        QStringLiteral("corrupt@request"),
        QStringLiteral("drop-byte@request"),
        QStringLiteral("flip@request"),
        QStringLiteral("foreign-type@request"),
        QStringLiteral("trail@request"),
        QStringLiteral("truncate@request"),
        QStringLiteral("wrong-command@request"),
        QStringLiteral("wrong-length@request"),
        QStringLiteral("wrong-parameter@request"),
        QStringLiteral("wrong-sum@request"),
    };
    return kChanging;
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
