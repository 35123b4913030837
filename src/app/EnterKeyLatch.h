#pragma once

// The Enter-key latch of the password dialogs. The system these dialogs come
// from hands them two messages per Enter press (the key-down and the
// character), and the latch lets only every second one through: one press
// confirms once. Feed it once per message.
class EnterKeyLatch
{
public:
    // True when this message runs the confirm action (the latch was set and is
    // now clear); false when it only sets the latch again.
    bool feed()
    {
        m_set = !m_set;
        return !m_set;
    }

    bool isSet() const { return m_set; }

    // One key press as the dialogs receive it: the key-down and the character
    // message. Returns how many times the confirm action runs (0 or 1; always 1
    // from the resting state). confirm() may end the dialog.
    template<typename Confirm> int press(Confirm &&confirm)
    {
        int runs = 0;
        for (int message = 0; message < 2; ++message) {
            if (feed()) {
                ++runs;
                confirm();
            }
        }
        return runs;
    }

private:
    bool m_set = true;
};
