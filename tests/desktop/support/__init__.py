# SPDX-License-Identifier: GPL-3.0-or-later
"""Everything that tests of the whole program need: a private desktop, a simulated laptop, and ways to see and click."""
