// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "seededrandom.h"

class SeededRandomTest : public QObject {
    Q_OBJECT

private slots:
    // The numbers come from another program, written after the standard's description of the seed
    // sequence and the engine.
    void givesTheSameNumbersOnEveryMachine_data()
    {
        addRows<quint32, quint32, QVector<int>>(
            {"seed", "stream", "numbers"},
            {{"seed 0", 0U, 0U, {153, 169, 247, 163, 239, 18, 203, 162}},
             {"another stream", 0U, 1U, {230, 73, 241, 153, 48, 13, 129, 210}},
             {"another seed", 1U, 0U, {169, 170, 99, 151, 158, 149, 44, 144}},
             {"highest seed", 4294967295U, 1U, {99, 223, 142, 144, 55, 76, 17, 209}}});
    }

    void givesTheSameNumbersOnEveryMachine()
    {
        QFETCH(quint32, seed);
        QFETCH(quint32, stream);
        SeededRandom random(seed, stream);
        QVector<int> numbers;
        for (int i = 0; i < 8; ++i) {
            numbers.append(random.below(256));
        }
        QTEST(numbers, "numbers");
    }

    void reachesBothEndsOfARange_data()
    {
        addRows<int, int>({"minimum", "maximum"},
                          {{"one number", 7, 7}, {"a bit", 0, 7}, {"from 1", 1, 20}});
    }

    void reachesBothEndsOfARange()
    {
        QFETCH(int, minimum);
        QFETCH(int, maximum);
        SeededRandom random(0, 0);
        int lowest = maximum;
        int highest = minimum;
        for (int i = 0; i < 1000; ++i) {
            const int number = random.between(minimum, maximum);
            lowest = qMin(lowest, number);
            highest = qMax(highest, number);
        }
        QCOMPARE(lowest, minimum);
        QCOMPARE(highest, maximum);
    }
};

QTEST_GUILESS_MAIN(SeededRandomTest)
#include "tst_seededrandom.moc"
