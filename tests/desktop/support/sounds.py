# SPDX-License-Identifier: GPL-3.0-or-later
"""A sound card that records sounds instead of playing them."""

import wave

from .program import bundle

# Each program that opens the card writes to a file of its own.
CONFIGURATION = """pcm.!default {{
    type file
    slave.pcm {{ type null }}
    file "|cat >'{folder}'/$$"
    format raw
}}
"""


class SoundCard:
    """The sound card of a private desktop, for programs whose environment contains `environment`."""

    def __init__(self, desktop):
        self._folder = desktop.folder / "sounds"
        self._folder.mkdir()
        configuration = desktop.folder / "sound-card.conf"
        configuration.write_text(CONFIGURATION.format(folder=self._folder), encoding="utf-8")
        # The machine's own sound server must not be used instead.
        self.environment = {"ALSA_CONFIG_PATH": str(configuration), "CANBERRA_DRIVER": "alsa"}

    def played(self):
        """The names of the program's sounds played, earliest first; "?" for other or still incomplete recordings."""
        known = {_samples(file): file.stem for file in bundle().glob("usr/share/sounds/velmora/*.wav")}
        files = sorted(self._folder.iterdir(), key=lambda file: file.stat().st_ctime_ns)
        return [known.get(file.read_bytes(), "?") for file in files]


def _samples(file):
    with wave.open(str(file)) as sound:
        return sound.readframes(sound.getnframes())
