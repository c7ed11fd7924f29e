#pragma once

/// The pages of the form's further settings.
enum SettingsPage : int {
    CommonPage = 0,
    NetworkPage = 1,
    SerialPage = 2,
    TimingPage = 3,
    PortPage = 4,
    FilterPage = 5,
};

/// What the form does for a type with further settings, beside showing its page.
enum Treatment : unsigned int {
    OpensPage = 0x0001,         ///< the page shows at once, without a click on the check box
    NoListenOnly = 0x0002,      ///< the box for listen only is not offered
    FixedBitrate = 0x0004,      ///< the bitrate is set elsewhere
    BitrateFromFile = 0x0008,   ///< and the list says where
    PortOnPortPage = 0x0010,    ///< the row with the port stands on PortPage
    PortOnNetworkPage = 0x0020, ///< or on NetworkPage
    DefaultPort = 0x0040,       ///< the port says what it is if it stays empty
    ShowsTimeouts = 0x0080,     ///< the network page has timeouts and the choice of a protocol
    HidesTimeouts = 0x0100,     ///< or has not
    ChecksAddress = 0x0200,     ///< the IP address is checked as soon as it shows
    NoDeviceChoice = 0x0400,    ///< the address tells the device
    ExtendedBtr = 0x0800,       ///< bitrates may be given as a register value
    NoBtrRow = 0x1000,          ///< the page has no row for such a value
    Terminator = 0x2000,        ///< the device has a termination resistor to be switched
    InternExtern = 0x4000,      ///< the choice between intern and extern, in place of the single wire
};

struct TypeTreatment
{
    unsigned int type;
    SettingsPage page;
    unsigned int treatments; ///< Treatment bits

    bool has(Treatment treatment) const { return (treatments & treatment) != 0; }
};

/// For a type that needs nothing of its own: the common page and no treatment.
TypeTreatment treatmentOf(unsigned int adapterType);
