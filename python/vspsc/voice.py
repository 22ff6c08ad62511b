"""What applications want: codecs, an echo canceller, the detection of speech and tones, pitch, level control.

Samples are one-dimensional numpy arrays of int16, where nothing else is said. Objects take a signal in blocks of any
length; the functions `vad`, `level`, `pitch` and `tone` take a whole recording.
"""

from threading import Lock
from typing import Any, Iterable, Iterator, NamedTuple

import numpy as np
import numpy.typing as npt

from vspsc import records
from vspsc.library import NULL, ffi
from vspsc.library import voice as _voice
from vspsc.status import outcome

Samples = npt.NDArray[np.int16]
Records = npt.NDArray[np.void]

_int16, _float32 = np.dtype(np.int16), np.dtype(np.float32)
_from_buffer, _empty, _ndarray = ffi.from_buffer, np.empty, np.ndarray
_shorts, _floats, _octets = ffi.typeof("Vsp16s[]"), ffi.typeof("Vsp32f[]"), ffi.typeof("Vsp8u[]")


def _done(status: int, function: str) -> None:
    if status:
        outcome(status, function)


def _size(function: str, *arguments: Any) -> int:
    size = ffi.new("Vsp32s*")
    _done(getattr(_voice, function)(*arguments, size), function)
    return int(size[0])


def _samples(samples: object) -> Samples:
    """Contiguous samples; a copy only where they are not."""
    if not isinstance(samples, np.ndarray) or samples.dtype != _int16 or samples.ndim != 1:
        what = f"{samples.ndim}-dimensional {samples.dtype}" if isinstance(samples, np.ndarray) else type(samples).__name__
        raise TypeError(f"samples must be a one-dimensional numpy array of int16, not {what}")
    return np.require(samples, _int16, ["C", "A"])


def _choice(what: str, choices: dict[str, int], given: str) -> int:
    if given not in choices:
        raise ValueError(f"{what} must be one of {', '.join(choices)}, not {given!r}")
    return choices[given]


def _check_rate(rate: int, *possible: int) -> None:
    if rate not in possible:
        raise ValueError(f"the sampling rate must be {' or '.join(map(str, possible))} Hz, not {rate}")


class _Object:
    """An object of the voice layer in memory of its own. Two threads cannot use it at the same time."""

    def __init__(self, kind: str, size: int) -> None:
        self._memory = ffi.new("char[]", size + 63)
        self._pointer = ffi.cast(f"{kind}*", self._memory + -int(ffi.cast("uintptr_t", self._memory)) % 64)
        self._lock = Lock()

    def __enter__(self) -> Any:
        if not self._lock.acquire(blocking=False):
            raise RuntimeError("another thread uses this object")
        return self._pointer

    def __exit__(self, *_: object) -> None:
        self._lock.release()

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__name__} cannot be copied")


def _found(function: str, detector: _Object, kind: str, most: int, *samples: Any) -> Records:
    """The records of this kind that a call of a detector finds."""
    found, count = np.zeros(most, getattr(records, kind)), ffi.new("Vsp32s*")
    if most:
        with detector as pointer:
            _done(getattr(_voice, function)(pointer, *samples, ffi.from_buffer(kind + "[]", found), count), function)
    return found[: count[0]]


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
            engine: "subband", late by 110 ms, or "fullband", late by 5 ms at a higher cost
            arithmetic: "float" or "fixed"
            max_delay_ms: the pure delay is searched up to here, 0 to 1000 ms
            tone_disabling: whether it steps aside for modems
            suppression: whether what the filters leave of the echo is suppressed, in sub-bands
        """
        settings = ffi.new("VspvEchoSettings*")
        settings.samplingRate, settings.tailMs, settings.maxBulkDelayMs = rate, tail_ms, max_delay_ms
        settings.engine = _choice("engine", {"subband": 0, "fullband": 1}, engine)
        settings.arithmetic = _choice("arithmetic", {"float": 0, "fixed": 1}, arithmetic)
        settings.toneDisabling, settings.suppression = bool(tone_disabling), bool(suppression)
        self._object = _Object("VspvEchoCanceller", _size("vspvEchoCancellerGetSize", settings))
        _done(_voice.vspvEchoCancellerInit(self._object._pointer, settings), "vspvEchoCancellerInit")
        self._pointer, self._lock = self._object._pointer, self._object._lock
        self._process_16s, self._process_32f = _voice.vspvEchoCancellerProcess_16s, _voice.vspvEchoCancellerProcess_32f
        self.latency = _size("vspvEchoCancellerLatency", self._pointer)  #: samples by which the output is late

    def process(self, far: npt.NDArray[Any], near: npt.NDArray[Any]) -> npt.NDArray[Any]:
        """The next samples of the near end without echo, `latency` samples late.

        Args:
            far: what goes to the loudspeaker, int16, or float32 on the same scale
            near: as many samples of the same type, taken at the same time
        """
        if type(far) is not _ndarray or type(near) is not _ndarray:
            far, near = np.asarray(far), np.asarray(near)
        kind, (length,) = near.dtype, near.shape
        if far.shape != near.shape or far.dtype != kind:
            raise ValueError("far and near must have as many samples of the same type")
        if length == 0:
            return near.copy()
        if not ((far.base is None or far.flags.aligned) and (near.base is None or near.flags.aligned)):
            far, near = np.require(far, None, ["A"]), np.require(near, None, ["A"])
        out: npt.NDArray[Any] = _empty(length, kind)
        if kind == _int16:
            process, array = self._process_16s, _shorts
        elif kind == _float32:
            process, array = self._process_32f, _floats
        else:
            raise TypeError(f"samples must be int16 or float32, not {kind}")
        if not self._lock.acquire(False):
            raise RuntimeError("another thread uses this canceller")
        try:
            status = process(self._pointer, _from_buffer(array, far), _from_buffer(array, near), _from_buffer(array, out), length)
        finally:
            self._lock.release()
        if status:
            outcome(status, "vspvEchoCancellerProcess")
        return out

    @property
    def status(self) -> dict[str, float]:
        """What it was doing at the end of the last block: the fields of VspvEchoStatus."""
        status = ffi.new("VspvEchoStatus*")
        with self._object as canceller:
            _done(_voice.vspvEchoCancellerStatus(canceller, status), "vspvEchoCancellerStatus")
        return {str(name): getattr(status, name) for name in records.VspvEchoStatus.names or ()}


class SpeechDetector:
    """Decides for every frame of 20 ms whether there is speech in it."""

    def __init__(self, rate: int = 8000, option: int = 1) -> None:
        """Makes a detector: at 8000 Hz that of GSM-AMR with option 1 or 2, at 16000 Hz that of AMR-WB."""
        _check_rate(rate, 8000, 16000)
        which = option if rate == 8000 else records.vspvSpeechWide
        if rate == 8000 and option not in (1, 2):
            raise ValueError(f"option must be 1 or 2, not {option}")
        self.frame = records.vspvSpeechFrame if rate == 8000 else records.vspvSpeechFrameWide  #: samples of a frame
        self._object = _Object("VspvSpeechDetector", _size("vspvSpeechDetectorGetSize", which))
        _done(_voice.vspvSpeechDetectorInit(self._object._pointer, which), "vspvSpeechDetectorInit")

    def process(self, samples: Samples) -> Records:
        """Decisions about the frames that these samples complete: fields speech, power, snr (dB), reference (dB)."""
        samples = _samples(samples)
        most = (samples.size + self.frame - 1) // self.frame
        return _found("vspvSpeechDetectorProcess", self._object, "VspvSpeechDecision", most, _from_buffer(_shorts, samples), samples.size)

    def finish(self) -> Records:
        """At the end of the signal: the decision about the frame that has begun, if there is one."""
        return _found("vspvSpeechDetectorFinish", self._object, "VspvSpeechDecision", 1)


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
        _check_rate(rate, 8000)
        which = _choice("search", {"main": 0, "annex a": 1, "annex d": 2}, search)
        self._object = _Object("VspvPitchTracker", _size("vspvPitchTrackerGetSize"))
        _done(_voice.vspvPitchTrackerInit(self._object._pointer, which), "vspvPitchTrackerInit")

    def process(self, samples: Samples) -> Records:
        """Two points of each frame of 80 samples that these and the 40 after it complete: the fields of VspvPitchPoint."""
        samples = _samples(samples)
        most = 2 * ((samples.size + 79) // 80)
        return _found("vspvPitchTrackerProcess", self._object, "VspvPitchPoint", most, _from_buffer(_shorts, samples), samples.size)

    def finish(self) -> Records:
        """At the end of the signal: the points of the last whole frame, if they are still missing."""
        return _found("vspvPitchTrackerFinish", self._object, "VspvPitchPoint", 2)


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
        _check_rate(rate, 8000)
        settings = ffi.new("VspvLevelSettings*", (target, limit, max_gain, block_unit))
        self._object = _Object("VspvLevelControl", _size("vspvLevelControlGetSize"))
        _done(_voice.vspvLevelControlInit(self._object._pointer, settings), "vspvLevelControlInit")
        self.latency = _size("vspvLevelControlLatency", self._object._pointer)  #: samples by which the output is late

    def process(self, samples: Samples) -> Samples:
        """The next samples at their new level, `latency` samples late."""
        samples = _samples(samples)
        out = np.empty_like(samples)
        if samples.size:
            with self._object as control:
                _done(_voice.vspvLevelControlProcess(control, _from_buffer(_shorts, samples), _from_buffer(_shorts, out), samples.size),
                      "vspvLevelControlProcess")  # fmt: skip
        return out


def level(samples: Samples, rate: int = 8000, target: float = 26.1, limit: float = 0, max_gain: float = 11.6) -> Samples:
    """A recording at 8000 Hz with its speech at an even level: `target` dB below full scale, as many samples.

    >>> import numpy as np, vspsc
    >>> vspsc.level(np.zeros(803, np.int16), 8000).size
    803
    """
    samples = _samples(samples)
    control = LevelControl(rate, target, limit, max_gain, block_unit=8)
    return control.process(np.append(samples, np.zeros(-samples.size % 8, np.int16)))[: samples.size]


class Denoiser:
    """Attenuates the noise in speech."""

    def __init__(self, rate: int = 8000, mode: str = "normal") -> None:
        """Makes a denoiser at 8000, 16000, 22050 or 32000 Hz; mode is "off", "low", "normal", "high" or "auto"."""
        _check_rate(rate, 8000, 16000, 22050, 32000)
        modes = {"off": 0, "low": 1, "normal": 2, "high": 3, "auto": 4}
        settings = ffi.new("VspvDenoiserSettings*", (rate, _choice("mode", modes, mode)))
        self._object = _Object("VspvDenoiser", _size("vspvDenoiserGetSize", settings))
        _done(_voice.vspvDenoiserInit(self._object._pointer, settings), "vspvDenoiserInit")
        self.latency = _size("vspvDenoiserLatency", self._object._pointer)  #: samples by which the output is late

    def process(self, samples: Samples) -> Samples:
        """The next samples with less noise, `latency` samples late."""
        samples = _samples(samples)
        out = np.empty_like(samples)
        if samples.size:
            with self._object as denoiser:
                _done(_voice.vspvDenoiserProcess_16s(denoiser, _from_buffer(_shorts, samples), _from_buffer(_shorts, out), samples.size),
                      "vspvDenoiserProcess_16s")  # fmt: skip
        return out

    @property
    def presence(self) -> float:
        """The share of the frequencies from 200 to 3500 Hz that have speech, 0 to 1."""
        presence = ffi.new("Vsp32f*")
        with self._object as denoiser:
            _done(_voice.vspvDenoiserPresence(denoiser, presence), "vspvDenoiserPresence")
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
        how = _choice("arithmetic", {"float": 0, "fixed": 1}, arithmetic)
        self._object = _Object("VspvToneDetector", _size("vspvToneDetectorGetSize", rate, how))
        _done(_voice.vspvToneDetectorInit(self._object._pointer, rate, how), "vspvToneDetectorInit")

    def process(self, samples: Samples) -> list[ToneEvent]:
        """The events of the next samples."""
        samples = _samples(samples)
        events, used, event = [], ffi.new("Vsp32s*"), ffi.new("VspvToneEvent*")
        pointer, left = _from_buffer(_shorts, samples), samples.size
        with self._object as detector:
            while left > 0:
                _done(_voice.vspvToneDetectorProcess(detector, pointer, left, used, event), "vspvToneDetectorProcess")
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
                _done(_voice.vspvToneDetectorFinish(detector, event), "vspvToneDetectorFinish")
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


class Frame(NamedTuple):
    """A frame of coded speech."""

    data: bytes
    bit_rate: int  #: bit/s
    type: int = records.vspvFrameSpeech
    quality: int = records.vspvQualityGood


def codecs() -> list[str]:
    """The names of all codecs.

    >>> "g722" in codecs()
    True
    """
    return [ffi.string(_voice.vspvCodec(i).name).decode() for i in range(_voice.vspvCodecCount())]


class Codec:
    """A codec of the voice layer.

    >>> import numpy as np, vspsc
    >>> codec = vspsc.Codec("g722")
    >>> frames = codec.encoder().process(np.zeros(16000, np.int16))
    >>> len(frames), len(frames[0].data), codec.decoder().process(frames).size
    (50, 160, 16000)
    """

    def __init__(self, name: str) -> None:
        """Finds a codec by its name or RTP encoding name, in letters of either case."""
        found = _voice.vspvFindCodec(name.encode()) if "\0" not in name else NULL
        if not found:
            raise ValueError(f"there is no codec {name!r}, but {', '.join(codecs())}")
        self._record = found

        def text(what: Any) -> str | None:
            return ffi.string(what).decode() if what else None

        self.name = text(found.name) or ""
        self.description = text(found.description) or ""
        self.standard = text(found.standard) or ""
        self.sampling_rate: int = found.samplingRate  #: Hz
        self.frame_samples: int = found.frameSamples
        self.max_frame_bytes: int = found.maxFrameBytes
        self.bit_rates: tuple[int, ...] = tuple(found.pBitRates[0 : found.numBitRates])  #: bit/s; the first is the usual one
        self.rtp_name = text(found.rtpName)
        self.rtp_clock_rate: int = found.rtpClockRate
        self.rtp_payload_type: int = found.rtpPayloadType  #: or -1
        self.has_dtx = bool(found.capabilities & records.vspvCodecDTX)
        self.conceals = bool(found.capabilities & records.vspvCodecConceals)

    def __repr__(self) -> str:
        return f"Codec({self.name!r})"

    def __reduce__(self) -> Any:
        return Codec, (self.name,)

    def speech_bytes(self, bit_rate: int) -> int:
        """Octets of a frame of speech."""
        return _size("vspvSpeechBytes", self._record, bit_rate)

    def encoder(self, bit_rate: int | None = None, dtx: int = 0) -> "Encoder":
        """A new encoder at a bit rate, with or without discontinuous transmission (amr: 1 or 2, the speech detector)."""
        return Encoder(self, bit_rate, dtx)

    def decoder(self) -> "Decoder":
        """A new decoder."""
        return Decoder(self)


class Encoder:
    """Codes a signal that comes in blocks of any length."""

    def __init__(self, codec: Codec, bit_rate: int | None = None, dtx: int = 0) -> None:
        self.codec = codec
        self._object = _Object("VspvEncoder", _size("vspvEncoderGetSize", codec._record))
        _done(_voice.vspvEncoderInit(self._object._pointer, codec._record), "vspvEncoderInit")
        if bit_rate is not None:
            self.set_rate(bit_rate)
        if dtx:
            self.set_dtx(dtx)
        self._rest: Samples = np.zeros(0, np.int16)
        self._octets, self._frame = ffi.new("Vsp8u[]", codec.max_frame_bytes), ffi.new("VspvFrame*")

    def set_rate(self, bit_rate: int) -> None:
        """Changes the bit rate from the next frame on."""
        with self._object as encoder:
            _done(_voice.vspvEncoderSetRate(encoder, bit_rate), "vspvEncoderSetRate")

    def set_dtx(self, mode: int) -> None:
        """Switches discontinuous transmission."""
        with self._object as encoder:
            _done(_voice.vspvEncoderSetDTX(encoder, mode), "vspvEncoderSetDTX")

    def process(self, samples: Samples) -> list[Frame]:
        """The frames that these samples complete."""
        samples = _samples(samples)
        size, octets, told, frames = self.codec.frame_samples, self._octets, self._frame, []
        with self._object as encoder:
            if self._rest.size:
                samples = np.concatenate([self._rest, samples])
            begin = _from_buffer(_shorts, samples)
            whole = samples.size // size * size
            for at in range(0, whole, size):
                _done(_voice.vspvEncode(encoder, begin + at, octets, told), "vspvEncode")
                frames.append(Frame(bytes(ffi.buffer(octets, told.numBytes)), told.bitRate, told.type, told.quality))
            self._rest = samples[whole:].copy()
        return frames

    def finish(self) -> list[Frame]:
        """At the end of the signal: the frame that has begun, filled up with silence."""
        missing = -self._rest.size % self.codec.frame_samples
        return self.process(np.zeros(missing, np.int16))


class Decoder:
    """Decodes frames, and conceals those that are lost."""

    def __init__(self, codec: Codec) -> None:
        self.codec = codec
        self._object = _Object("VspvDecoder", _size("vspvDecoderGetSize", codec._record))
        _done(_voice.vspvDecoderInit(self._object._pointer, codec._record), "vspvDecoderInit")
        self._rest = b""
        self._lengths: dict[int, int] = {}  # of frames of speech, with the bit rate that has it
        for bit_rate in codec.bit_rates:
            self._lengths.setdefault(codec.speech_bytes(bit_rate), bit_rate)

    def process(self, frames: "Iterable[Frame | bytes | None] | Frame | bytes | None") -> Samples:
        """The samples of the next frames.

        Args:
            frames: frames of an encoder; octets of a good frame of speech; None for one that is lost. Of a codec whose
                frames have one length, octets alone may be any part of a stream.
        """
        each: Iterable[Any]
        if isinstance(frames, (bytes, bytearray, memoryview)):
            each = self._split(bytes(frames))
        elif frames is None or isinstance(frames, Frame):
            each = [frames]
        else:
            each = frames
        out = [self._decode(frame) for frame in each]
        return np.concatenate(out) if out else np.zeros(0, np.int16)

    def _split(self, octets: bytes) -> Iterator[bytes]:
        if len(self._lengths) > 1:
            yield octets
            return
        size = next(iter(self._lengths))
        octets = self._rest + octets
        whole = len(octets) // size * size
        self._rest = octets[whole:]
        for at in range(0, whole, size):
            yield octets[at : at + size]

    def _decode(self, frame: Frame | bytes | None) -> Samples:
        if frame is None:
            frame = Frame(b"", self.codec.bit_rates[0], quality=records.vspvQualityLost)
        elif not isinstance(frame, Frame):
            data = bytes(frame)
            if len(data) not in self._lengths:
                raise ValueError(f"{self.codec.name} has frames of {sorted(self._lengths)} octets, not of {len(data)}")
            frame = Frame(data, self._lengths[len(data)])
        told = ffi.new("VspvFrame*", (frame.type, frame.quality, frame.bit_rate, len(frame.data)))
        octets = _from_buffer(_octets, frame.data) if frame.data else NULL
        samples: Samples = np.empty(self.codec.frame_samples, np.int16)
        with self._object as decoder:
            _done(_voice.vspvDecode(decoder, octets, told, _from_buffer(_shorts, samples)), "vspvDecode")
        return samples


__all__ = ["Codec", "Decoder", "Denoiser", "EchoCanceller", "Encoder", "Frame", "LevelControl", "PitchTracker", "SpeechDetector",
           "ToneDetector", "ToneEvent", "codecs", "level", "pitch", "tone", "vad"]  # fmt: skip
