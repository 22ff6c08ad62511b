"""What applications want: codecs, an echo canceller, the detection of speech and tones, pitch, level control.

Samples are one-dimensional numpy arrays of int16, where nothing else is said. Objects take a signal in blocks of any
length; the functions `vad`, `level`, `pitch` and `tone` take a whole recording.
"""

from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt

from vspsc import records
from vspsc.codec import Codec, Decoder, Encoder, Frame, codecs
from vspsc.library import NULL, ffi
from vspsc.library import voice as _voice
from vspsc.objects import FLOAT32, FLOATS, INT16, SHORTS, Object, Records, Samples, check_rate, choice, done, found, samples_of, result_of
from vspsc.status import outcome

_from_buffer, _empty, _ndarray = ffi.from_buffer, np.empty, np.ndarray


class EchoCanceller:
    """Removes from a near-end signal the echo that it has of a far-end signal.

    >>> import numpy as np, vspsc
    >>> canceller = vspsc.EchoCanceller(8000, tail_ms=64)
    >>> far = near = np.zeros(80, np.int16)
    >>> canceller.process(far, near).shape
    (80,)
    """

    def __init__(self, rate: int = 8000, tail_ms: float = 128, *, engine: str = "subband", arithmetic: str = "float",
                 max_delay_ms: float = 1000, tone_disabling: bool = True, suppression: bool = False) -> None:  # fmt: skip
        """Makes a canceller.

        Args:
            rate: sampling rate, 8000 or 16000 Hz
            tail_ms: longest echo path, 1 to 500 ms, without the pure delay before it
            engine: "subband", late by 110 ms, or "fullband", late by 20 ms at a higher cost
            arithmetic: "float" or "fixed"
            max_delay_ms: the pure delay is searched up to here, 0 to 1000 ms
            tone_disabling: whether it steps aside for modems
            suppression: whether what the filters leave of the echo is suppressed, in sub-bands
        """
        settings = ffi.new("VspvEchoSettings*")
        settings.samplingRate, settings.tailMs, settings.maxBulkDelayMs = rate, tail_ms, max_delay_ms
        settings.engine = choice("engine", {"subband": 0, "fullband": 1}, engine)
        settings.arithmetic = choice("arithmetic", {"float": 0, "fixed": 1}, arithmetic)
        settings.toneDisabling, settings.suppression = bool(tone_disabling), bool(suppression)
        self._object = Object("VspvEchoCanceller", result_of("vspvEchoCancellerGetSize", settings))
        done(_voice.vspvEchoCancellerInit(self._object.pointer, settings), "vspvEchoCancellerInit")
        self._pointer = self._object.pointer
        self._take, self._give_back = self._object.idle.pop, self._object.idle.append
        self._process_16s, self._process_32f = _voice.vspvEchoCancellerProcess_16s, _voice.vspvEchoCancellerProcess_32f
        # The arrays of the last call with `out`, and what the library got for them.
        self._last: tuple[Any, ...] = (NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0)
        self.latency = result_of("vspvEchoCancellerLatency", self._pointer)  #: samples by which the output is late

    def process(self, far: npt.NDArray[Any], near: npt.NDArray[Any], out: npt.NDArray[Any] | None = None) -> npt.NDArray[Any]:
        """The next samples of the near end without echo, `latency` samples late.

        Args:
            far: what goes to the loudspeaker, int16, or float32 on the same scale
            near: as many samples of the same type, taken at the same time
            out: an array for the result instead of a new one; may be far or near. Calls with the same three arrays again
                and again take the least time.
        """
        last_far, last_near, last_out, function, source, other, destination, length = self._last
        if not (far is last_far and near is last_near and out is last_out and len(far) == len(near) == len(out) == length):
            if type(far) is not _ndarray or type(near) is not _ndarray:
                far, near = np.asarray(far), np.asarray(near)
            kind, shape = near.dtype, near.shape
            if kind is INT16 or kind == INT16:
                function, pointer = self._process_16s, SHORTS
            elif kind == FLOAT32:
                function, pointer = self._process_32f, FLOATS
            else:
                raise TypeError(f"samples must be int16 or float32, not {kind}")
            if len(shape) != 1 or far.shape != shape or (far.dtype is not kind and far.dtype != kind):
                raise ValueError("far and near must have as many samples of the same type")
            (length,) = shape
            given = out
            if out is None:
                out = _empty(length, kind)
            elif type(out) is not _ndarray or out.shape != shape or out.dtype != kind or not out.flags.aligned:
                raise ValueError("out must be an array with as many samples of the same type")
            if length == 0:
                return out
            if not ((far.base is None or far.flags.aligned) and (near.base is None or near.flags.aligned)):
                far, near = np.require(far, None, ["A"]), np.require(near, None, ["A"])
            source, other, destination = _from_buffer(pointer, far), _from_buffer(pointer, near), _from_buffer(pointer, out, True)
            if given is not None:
                self._last = (far, near, out, function, source, other, destination, length)
        try:
            canceller = self._take()
        except IndexError:
            raise RuntimeError("another thread uses this canceller") from None
        try:
            status = function(canceller, source, other, destination, length)
        finally:
            self._give_back(canceller)
        if status:
            outcome(status, "vspvEchoCancellerProcess")
        return out

    @property
    def status(self) -> dict[str, float]:
        """What it was doing at the end of the last block: the fields of VspvEchoStatus."""
        status = ffi.new("VspvEchoStatus*")
        with self._object as canceller:
            done(_voice.vspvEchoCancellerStatus(canceller, status), "vspvEchoCancellerStatus")
        return {str(name): getattr(status, name) for name in records.VspvEchoStatus.names or ()}


class SpeechDetector:
    """Decides for every frame of 20 ms whether there is speech in it."""

    def __init__(self, rate: int = 8000, option: int = 1) -> None:
        """Makes a detector: at 8000 Hz that of GSM-AMR with option 1 or 2, at 16000 Hz that of AMR-WB."""
        check_rate(rate, 8000, 16000)
        which = option if rate == 8000 else records.vspvSpeechWide
        if rate == 8000 and option not in (1, 2):
            raise ValueError(f"option must be 1 or 2, not {option}")
        self.frame = records.vspvSpeechFrame if rate == 8000 else records.vspvSpeechFrameWide  #: samples of a frame
        self._object = Object("VspvSpeechDetector", result_of("vspvSpeechDetectorGetSize", which))
        done(_voice.vspvSpeechDetectorInit(self._object.pointer, which), "vspvSpeechDetectorInit")

    def process(self, samples: Samples) -> Records:
        """Decisions about the frames that these samples complete: fields speech, power, snr (dB), reference (dB)."""
        samples = samples_of(samples)
        most = (samples.size + self.frame - 1) // self.frame
        return found("vspvSpeechDetectorProcess", self._object, "VspvSpeechDecision", most, _from_buffer(SHORTS, samples), samples.size)

    def finish(self) -> Records:
        """At the end of the signal: the decision about the frame that has begun, if there is one."""
        return found("vspvSpeechDetectorFinish", self._object, "VspvSpeechDecision", 1)


def vad(samples: Samples, rate: int = 8000, option: int = 1) -> npt.NDArray[np.bool_]:
    """Where there is speech: one value for every 20 ms of a recording at 8000 or 16000 Hz.

    >>> import numpy as np, vspsc
    >>> vspsc.vad(np.zeros(8000, np.int16), 8000).shape
    (50,)
    """
    detector = SpeechDetector(rate, option)
    decisions = np.concatenate([detector.process(samples), detector.finish()])
    speech: npt.NDArray[np.bool_] = decisions["speech"] != 0
    return speech


class PitchTracker:
    """Follows the pitch of speech at 8000 Hz as an encoder of G.729 does."""

    def __init__(self, rate: int = 8000, search: str = "main") -> None:
        """Makes a tracker; search is "main", "annex a" (less effort) or "annex d" (6.4 kbit/s)."""
        check_rate(rate, 8000)
        which = choice("search", {"main": 0, "annex a": 1, "annex d": 2}, search)
        self._object = Object("VspvPitchTracker", result_of("vspvPitchTrackerGetSize"))
        done(_voice.vspvPitchTrackerInit(self._object.pointer, which), "vspvPitchTrackerInit")

    def process(self, samples: Samples) -> Records:
        """Two points of each frame of 80 samples that these and the 40 after it complete: the fields of VspvPitchPoint."""
        samples = samples_of(samples)
        most = 2 * ((samples.size + 79) // 80)
        return found("vspvPitchTrackerProcess", self._object, "VspvPitchPoint", most, _from_buffer(SHORTS, samples), samples.size)

    def finish(self) -> Records:
        """At the end of the signal: the points of the last whole frame, if they are still missing."""
        return found("vspvPitchTrackerFinish", self._object, "VspvPitchPoint", 2)


def pitch(samples: Samples, rate: int = 8000, search: str = "main") -> Records:
    """The pitch every 5 ms of a recording at 8000 Hz: f0 (Hz), voiced, lag and fraction (samples), gain and others.

    >>> import numpy as np, vspsc
    >>> n = np.arange(8000)
    >>> points = vspsc.pitch((8000 * (n % 80 < 8)).astype(np.int16), 8000)
    >>> float(np.median(points["f0"]))
    100.0
    """
    tracker = PitchTracker(rate, search)
    return np.concatenate([tracker.process(samples), tracker.finish()])


class LevelControl:
    """Brings speech at 8000 Hz to an even level, in the manner of ITU-T G.169."""

    def __init__(self, rate: int = 8000, target: float = 26.1, limit: float = 0, max_gain: float = 11.6, block_unit: int = 1) -> None:
        """Makes a level control.

        Args:
            rate: sampling rate, 8000 Hz
            target: dB below full scale that speech is brought to
            limit: dB below full scale that no sample exceeds
            max_gain: largest gain, dB
            block_unit: what the length of every block is a multiple of: 8, 4, 2 or 1
        """
        check_rate(rate, 8000)
        settings = ffi.new("VspvLevelSettings*", (target, limit, max_gain, block_unit))
        self._object = Object("VspvLevelControl", result_of("vspvLevelControlGetSize"))
        done(_voice.vspvLevelControlInit(self._object.pointer, settings), "vspvLevelControlInit")
        self.latency = result_of("vspvLevelControlLatency", self._object.pointer)  #: samples by which the output is late

    def process(self, samples: Samples) -> Samples:
        """The next samples at their new level, `latency` samples late."""
        samples = samples_of(samples)
        out = _empty(samples.size, INT16)
        if samples.size:
            with self._object as control:
                done(_voice.vspvLevelControlProcess(control, _from_buffer(SHORTS, samples), _from_buffer(SHORTS, out), samples.size),
                      "vspvLevelControlProcess")  # fmt: skip
        return out


def level(samples: Samples, rate: int = 8000, target: float = 26.1, limit: float = 0, max_gain: float = 11.6) -> Samples:
    """A recording at 8000 Hz with its speech at an even level: `target` dB below full scale, as many samples.

    >>> import numpy as np, vspsc
    >>> vspsc.level(np.zeros(803, np.int16), 8000).size
    803
    """
    samples = samples_of(samples)
    control = LevelControl(rate, target, limit, max_gain, block_unit=8)
    return control.process(np.append(samples, np.zeros(-samples.size % 8, np.int16)))[: samples.size]


class Denoiser:
    """Attenuates the noise in speech."""

    _MODES = {"off": 0, "low": 1, "normal": 2, "high": 3, "auto": 4}

    def __init__(self, rate: int = 8000, mode: str = "normal") -> None:
        """Makes a denoiser at 8000, 16000, 22050 or 32000 Hz; mode is "off", "low", "normal", "high" or "auto"."""
        check_rate(rate, 8000, 16000, 22050, 32000)
        settings = ffi.new("VspvDenoiserSettings*", (rate, choice("mode", self._MODES, mode)))
        self._object = Object("VspvDenoiser", result_of("vspvDenoiserGetSize", settings))
        done(_voice.vspvDenoiserInit(self._object.pointer, settings), "vspvDenoiserInit")
        self.latency = result_of("vspvDenoiserLatency", self._object.pointer)  #: samples by which the output is late

    def set_mode(self, mode: str) -> None:
        """Changes the mode. What has been learned of the noise stays."""
        with self._object as denoiser:
            done(_voice.vspvDenoiserSetMode(denoiser, choice("mode", self._MODES, mode)), "vspvDenoiserSetMode")

    def process(self, samples: npt.NDArray[Any]) -> npt.NDArray[Any]:
        """The next samples, int16 or float32 on the same scale, with less noise, `latency` samples late."""
        samples = samples_of(samples, FLOAT32)
        out: npt.NDArray[Any] = _empty(samples.size, samples.dtype)
        which, kind = ("16s", SHORTS) if samples.dtype == INT16 else ("32f", FLOATS)
        function = f"vspvDenoiserProcess_{which}"
        if samples.size:
            with self._object as denoiser:
                done(getattr(_voice, function)(denoiser, _from_buffer(kind, samples), _from_buffer(kind, out), samples.size), function)
        return out

    @property
    def presence(self) -> float:
        """The share of the frequencies from 200 to 3500 Hz that have speech, 0 to 1."""
        presence = ffi.new("Vsp32f*")
        with self._object as denoiser:
            done(_voice.vspvDenoiserPresence(denoiser, presence), "vspvDenoiserPresence")
        return float(presence[0])


class ToneEvent(NamedTuple):
    """A phase reversal of an answer tone, or the end of one."""

    kind: str  #: "reversal" or "end"
    time: int  #: samples from the beginning, when it is reported
    reversals: int  #: of the tone so far
    start: int  #: samples, of the tone; at its end only, like the next
    end: int
    power: float  #: mean square of the tone


class ToneDetector:
    """Finds the answer tones of modems: 2100 Hz with phase reversals."""

    def __init__(self, rate: int = 8000, arithmetic: str = "float") -> None:
        """Makes a detector for 8000 or 16000 Hz; arithmetic is "float" or "fixed"."""
        how = choice("arithmetic", {"float": 0, "fixed": 1}, arithmetic)
        self._object = Object("VspvToneDetector", result_of("vspvToneDetectorGetSize", rate, how))
        done(_voice.vspvToneDetectorInit(self._object.pointer, rate, how), "vspvToneDetectorInit")

    def process(self, samples: Samples) -> list[ToneEvent]:
        """The events of the next samples."""
        samples = samples_of(samples)
        events, used, event = [], ffi.new("Vsp32s*"), ffi.new("VspvToneEvent*")
        pointer, left = _from_buffer(SHORTS, samples), samples.size
        with self._object as detector:
            while left > 0:
                done(_voice.vspvToneDetectorProcess(detector, pointer, left, used, event), "vspvToneDetectorProcess")
                if event.type == records.vspvToneNothing:
                    break
                events.append(self._event(event))
                pointer, left = pointer + used[0], left - used[0]
        return events

    def finish(self) -> list[ToneEvent]:
        """At the end of the signal: what there is still to report."""
        events: list[ToneEvent] = []
        event = ffi.new("VspvToneEvent*")
        with self._object as detector:
            while True:
                done(_voice.vspvToneDetectorFinish(detector, event), "vspvToneDetectorFinish")
                if event.type == records.vspvToneNothing:
                    return events
                events.append(self._event(event))

    @staticmethod
    def _event(e: Any) -> ToneEvent:
        kind = "reversal" if e.type == records.vspvToneReversal else "end"
        return ToneEvent(kind, e.time, e.reversals, e.start, e.end, e.power)


def tone(samples: Samples, rate: int = 8000, arithmetic: str = "float") -> list[ToneEvent]:
    """The answer tones of a recording at 8000 or 16000 Hz: their ends, with start and number of reversals.

    >>> import numpy as np, vspsc
    >>> vspsc.tone(np.zeros(8000, np.int16), 8000)
    []
    """
    detector = ToneDetector(rate, arithmetic)
    return [event for event in detector.process(samples) + detector.finish() if event.kind == "end"]


__all__ = ["Codec", "Decoder", "Denoiser", "EchoCanceller", "Encoder", "Frame", "LevelControl", "PitchTracker", "SpeechDetector",
           "ToneDetector", "ToneEvent", "codecs", "level", "pitch", "tone", "vad"]  # fmt: skip
