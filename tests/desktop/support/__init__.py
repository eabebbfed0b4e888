# SPDX-License-Identifier: GPL-3.0-or-later
"""What a run of the whole program needs around it: a desktop of its own, a laptop that obeys, and eyes and hands."""
