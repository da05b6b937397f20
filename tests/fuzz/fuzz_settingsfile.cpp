// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever a file holds: it is refused with a reason, or it is what is read again from what is
// written of it. Whatever the settings are: the file that is written of them is read as they are.
//
// The first byte of an input says which of the two.

#include "fuzztarget.h"
#include "require.h"
#include "settingswords.h"

namespace {

void checkFile(const QByteArray &contents)
{
    QString fault;
    const auto settings = SettingsWords::fromFile(contents, &fault);
    if (!settings) {
        require(!fault.isEmpty(), "a file that is refused has a reason");
        return;
    }
    require(fault.isEmpty(), "a file that is taken has no fault");
    require(!SettingsWords::unknownKey(*settings), "each setting of a file has a word");
    const QByteArray written = SettingsWords::toFile(*settings);
    const auto again = SettingsWords::fromFile(written, &fault);
    require(again && cameraSettingsPayload(*again) == cameraSettingsPayload(*settings),
            "what is written of a file is read as the same settings");
    require(SettingsWords::toFile(*again) == written, "what is written is always the same");
}

void checkSettings(const std::uint8_t *data)
{
    const CameraSettings settings{data[0] % 4, data[1] % 10, data[2] % 2 == 1, data[3] % 2,
                                  data[4] % 4};
    QString fault;
    const auto again = SettingsWords::fromFile(SettingsWords::toFile(settings), &fault);
    require(again && SettingsWords::differences(settings, *again).isEmpty(),
            "settings come back from their file");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t kSettings = 5;
    if (size == 0) {
        return 0;
    }
    if (data[0] % 2 == 0) {
        checkFile(QByteArray::fromRawData(reinterpret_cast<const char *>(data + 1),
                                          static_cast<int>(size) - 1));
    } else if (size > kSettings) {
        checkSettings(data + 1);
    }
    return 0;
}
