// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "sessions.h"

#include <QMutex>
#include <QThreadPool>

#include <cstdio>

Tally runSessions(quint32 first, int count, int jobs,
                  const std::function<Tally(quint32 seed)> &session)
{
    Tally sum;
    int done = 0;
    QMutex mutex; // around both
    QThreadPool threads;
    threads.setMaxThreadCount(jobs);
    for (int i = 0; i < count; ++i) {
        const quint32 seed = first + static_cast<quint32>(i);
        threads.start([&, seed] {
            const Tally tally = session(seed);
            const QMutexLocker lock(&mutex);
            sum.add(tally);
            ++done;
            std::fprintf(stderr, "\r%d of %d%s", done, count, done == count ? "\n" : "");
            if (tally.hasFailed()) {
                // At once: a long test may be given up.
                std::fprintf(stderr, "\n%s\n", qPrintable(tally.text()));
            }
        });
    }
    threads.waitForDone();
    return sum;
}
