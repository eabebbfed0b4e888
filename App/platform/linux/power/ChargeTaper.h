// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// How a lithium battery takes charge: evenly, until its voltage is as high as it may be, and from then on ever less.
/// The voltage rises with the charge, so from there on the rate falls with it in a straight line; the faster the
/// charge, the sooner. Amounts are parts of a full battery, rates such parts per hour.
struct ChargeTaper {
    /// Makers of cells and chargers end a charge when the rate is down to a twentieth of full an hour.
    static constexpr double endRate = 0.05;

    double plateau = 0; ///< the rate while it is even; 0 while that is unknown, and then nothing tapers
    /// How much the highest rate falls from empty to full, above 0. With this one, a battery that fills by 0.7 an hour
    /// tapers from 78 % on, as many do.
    double slope = 3;

    /// The part of the plateau's rate that is taken with `missing` missing to full, 0..1.
    double share(double missing) const;

    /// The amount that would be charged at the plateau's rate in the time that it takes to charge what is missing.
    double effort(double missing) const;
};
