// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A program that has a port open.
struct PortHolder {
    qint64 pid = 0;
    QString name;
};

/// What came of opening a port and talking over it, apart from the bytes.
struct PortFinding {
    enum class Kind {
        Open,         ///< could be opened, and stayed so
        HungUp,       ///< could be opened, and failed while it was open: its device is gone
        LineHungUp,   ///< likewise, but its device is still there
        NoDevice,     ///< nothing by that name
        NotSerial,    ///< something else by that name
        NotInGroup,   ///< not permitted, but to a group that the user is not in
        LoginMissing, ///< not permitted, but to a group that the user has joined since logging in
        NotPermitted, ///< not permitted, and joining a group is no help
        Console,      ///< a console of this computer
        Held,         ///< another program has it
        StaleLock,    ///< a program that has ended has left its lock file
        CannotOpen,   ///< for any other reason
    };

    Kind kind = Kind::Open;
    QString port;                 ///< as given
    QString devicePath;           ///< where that leads, such as /dev/ttyUSB0
    QString systemText;           ///< the system's own words; of the two HungUp and CannotOpen
    QString thing;                ///< what it is instead, such as "a folder"; of NotSerial
    QString group;                ///< of NotInGroup and LoginMissing
    QString user;                 ///< who runs this program; of the three that are not permitted
    QString owner;                ///< whose device it is; likewise
    QString lockFile;             ///< of StaleLock
    QVector<PortHolder> holders;  ///< other programs that have it open, whatever became of it
    bool seesEveryHolder = false; ///< also those of other users
    bool isReadByOthers = false;  ///< another program took bytes that were there to be read
    QStringList ports;            ///< all that there are, see listedPorts()
};
