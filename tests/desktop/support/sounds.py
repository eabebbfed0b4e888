# SPDX-License-Identifier: GPL-3.0-or-later
"""A sound card that keeps what it is given instead of playing it."""

import wave

from .program import bundle

# Whoever opens the card writes into a file of its own.
CONFIGURATION = """pcm.!default {{
    type file
    slave.pcm {{ type null }}
    file "|cat >'{folder}'/$$"
    format raw
}}
"""


class SoundCard:
    """The card of a private desktop, for programs with `environment` in theirs."""

    def __init__(self, desktop):
        self._folder = desktop.folder / "sounds"
        self._folder.mkdir()
        configuration = desktop.folder / "sound-card.conf"
        configuration.write_text(CONFIGURATION.format(folder=self._folder), encoding="utf-8")
        # A sound server of the machine's must not be asked instead.
        self.environment = {"ALSA_CONFIG_PATH": str(configuration), "CANBERRA_DRIVER": "alsa"}

    def played(self):
        """The program's sounds that were played, the earliest first; "?" for what is none of them, or not whole yet."""
        known = {_samples(file): file.stem for file in bundle().glob("usr/share/sounds/velmora/*.wav")}
        files = sorted(self._folder.iterdir(), key=lambda file: file.stat().st_ctime_ns)
        return [known.get(file.read_bytes(), "?") for file in files]


def _samples(file):
    with wave.open(str(file)) as sound:
        return sound.readframes(sound.getnframes())
