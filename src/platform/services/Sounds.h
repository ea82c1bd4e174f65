#pragma once

namespace stowhaven {

// The end-of-job signals: the "Done" sound and a vibration.
class Sounds {
public:
    virtual ~Sounds() = default;
    virtual void playDoneSound() = 0;
    virtual void vibrate() = 0;
};

// A host has neither speaker nor vibrator that the program may assume; the signals are
// logged, and a front end may install a Sounds of its own (a terminal bell).
class HostSounds final : public Sounds {
public:
    void playDoneSound() override;
    void vibrate() override;
};

}  // namespace stowhaven
