"""Codecs: frames of samples to frames of octets and back, and RTP payloads."""

from typing import Any, Iterable, NamedTuple

import numpy as np

from vspsc import records
from vspsc.library import NULL, ffi
from vspsc.library import voice as _voice
from vspsc.objects import INT16, OCTETS, SHORTS, Object, Samples, choice, done, samples_of, result_of

_from_buffer, _buffer, _empty = ffi.from_buffer, ffi.buffer, np.empty
_frame_type = ffi.typeof("VspvFrame*")
_encode, _decode = _voice.vspvEncode, _voice.vspvDecode
_NOTHING: Samples = np.zeros(0, np.int16)


class Frame(NamedTuple):
    """A frame of coded speech."""

    data: bytes
    bit_rate: int  #: bit/s
    type: int = records.vspvFrameSpeech
    quality: int = records.vspvQualityGood


_FORMS = {"storage": records.vspvAMRStorage, "if1": records.vspvAMRIF1, "if2": records.vspvAMRIF2}


def _stored(form: str) -> tuple[()]:
    choice("form", {"storage": 0}, form)
    return ()


def _bytes(octets: Any) -> bytes:
    """The octets of bytes and the like; a number is none, of which `bytes` would make zeros."""
    return octets if isinstance(octets, bytes) else bytes(memoryview(octets))


def _told(frame: Frame) -> tuple[int, int, int, int]:
    """A frame's VspvFrame."""
    if not isinstance(frame.data, bytes):
        raise TypeError(f"a frame has bytes, not {type(frame.data).__name__}")
    return frame.type, frame.quality, frame.bit_rate, len(frame.data)


def _frame(octets: Any, told: Any) -> Frame:
    """Of what the library tells of a frame."""
    return Frame(_buffer(octets, told.numBytes)[:], told.bitRate, told.type, told.quality)


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
        return result_of("vspvSpeechBytes", self._record, bit_rate)

    def pack_payload(self, frames: "Iterable[Frame]", octet_aligned: bool = False, mode_request: int = 0) -> bytes:
        """An RTP payload of frames of amr or amrwb (RFC 4867), without interleaving, CRCs and robust sorting.

        Args:
            frames: 1 to 1000 frames
            octet_aligned: instead of bandwidth-efficient
            mode_request: the bit rate that is asked for from the other end, 0 for no request
        """
        frames, function = list(frames), f"vspv{self._rfc4867()}PackPayload"
        told = ffi.new("VspvFrame[]", [_told(frame) for frame in frames])
        room = ffi.new("Vsp8u[]", 1 + 61 * len(frames))
        size = result_of(function, b"".join(frame.data for frame in frames), told, len(frames), bool(octet_aligned), mode_request, room)
        return bytes(_buffer(room, size))

    def unpack_payload(self, payload: bytes, octet_aligned: bool = False) -> "tuple[list[Frame], int]":
        """The frames of an RTP payload of amr or amrwb, and the bit rate that it asks for, or 0."""
        payload, function = _bytes(payload), f"vspv{self._rfc4867()}UnpackPayload"
        most = 8 * len(payload) // 6 + 1  # no frame has a shorter entry in the table of contents
        request, number = ffi.new("Vsp32s*"), ffi.new("Vsp32s*")
        room, told = ffi.new("Vsp8u[]", most * self.max_frame_bytes), ffi.new("VspvFrame[]", most)
        done(getattr(_voice, function)(payload, len(payload), bool(octet_aligned), most, request, room, told, number), function)
        frames, at = [], 0
        for frame in told[0 : number[0]]:
            frames.append(_frame(room + at, frame))
            at += frame.numBytes
        return frames, request[0]

    def pack_frame(self, frame: "Frame", form: str = "storage", mode_request: int = 0) -> bytes:
        """A frame of amr or amrwb as it is stored in .amr and .awb files, or of amr in another form.

        Args:
            frame: the frame
            form: "storage", or of amr "if1" or "if2" (3GPP TS 26.101)
            mode_request: of "if1", the bit rate that is asked for from the other end, 0 for that of the frame
        """
        name = self._rfc4867()
        more = (choice("form", _FORMS, form), mode_request) if name == "AMR" else _stored(form)
        room = ffi.new("Vsp8u[]", records.vspvAMRWBMaxStoredBytes)
        size = result_of(f"vspv{name}PackFrame", frame.data, ffi.new(_frame_type, _told(frame)), *more, room)
        return bytes(_buffer(room, size))

    def unpack_frame(self, octets: bytes, form: str = "storage") -> "tuple[Frame, int]":
        """The first frame of octets that pack_frame has made, and the number of octets that it takes."""
        octets, name = _bytes(octets), self._rfc4867()
        more = (choice("form", _FORMS, form),) if name == "AMR" else _stored(form)
        room, told = ffi.new("Vsp8u[]", self.max_frame_bytes), ffi.new(_frame_type)
        used = result_of(f"vspv{name}UnpackFrame", octets, len(octets), *more, room, told)
        return _frame(room, told), used

    def _rfc4867(self) -> str:
        names = {"amr": "AMR", "amrwb": "AMRWB"}
        if self.name not in names:
            raise ValueError(f"{self.name} has no such form; {' and '.join(names)} have")
        return names[self.name]

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
        self._object = Object("VspvEncoder", result_of("vspvEncoderGetSize", codec._record))
        done(_voice.vspvEncoderInit(self._object.pointer, codec._record), "vspvEncoderInit")
        if bit_rate is not None:
            self.set_rate(bit_rate)
        if dtx:
            self.set_dtx(dtx)
        self._rest: Samples = _NOTHING
        self._room = ffi.new("Vsp8u[]", codec.max_frame_bytes)
        self._octets, self._frame = ffi.cast(OCTETS, self._room), ffi.new(_frame_type)

    def set_rate(self, bit_rate: int) -> None:
        """Changes the bit rate from the next frame on."""
        with self._object as encoder:
            done(_voice.vspvEncoderSetRate(encoder, bit_rate), "vspvEncoderSetRate")

    def set_dtx(self, mode: int) -> None:
        """Switches discontinuous transmission."""
        with self._object as encoder:
            done(_voice.vspvEncoderSetDTX(encoder, mode), "vspvEncoderSetDTX")

    def set_high_pass(self, on: bool) -> None:
        """Switches the high-pass filter of the input of g723 from the next frame on; an encoder begins with it."""
        with self._object as encoder:
            done(_voice.vspvG723SetHighPass(encoder, bool(on)), "vspvG723SetHighPass")

    def process(self, samples: Samples) -> list[Frame]:
        """The frames that these samples complete."""
        samples = samples_of(samples)
        size, octets, told, frames = self.codec.frame_samples, self._octets, self._frame, []
        with self._object as encoder:
            if self._rest.size:
                samples = np.concatenate([self._rest, samples])
            begin = _from_buffer(SHORTS, samples)
            whole = samples.size // size * size
            for at in range(0, whole, size):
                if status := _encode(encoder, begin + at if at else begin, octets, told):
                    done(status, "vspvEncode")
                frames.append(_frame(octets, told))
            self._rest = samples[whole:].copy() if whole < samples.size else _NOTHING
        return frames

    def finish(self) -> list[Frame]:
        """At the end of the signal: the frame that has begun, filled up with silence."""
        missing = -self._rest.size % self.codec.frame_samples
        return self.process(np.zeros(missing, np.int16))


class Decoder:
    """Decodes frames, and conceals those that are lost."""

    def __init__(self, codec: Codec) -> None:
        self.codec = codec
        self._object = Object("VspvDecoder", result_of("vspvDecoderGetSize", codec._record))
        done(_voice.vspvDecoderInit(self._object.pointer, codec._record), "vspvDecoderInit")
        self._rest = b""
        self._lengths: dict[int, int] = {}  # of frames of speech, with the bit rate that has it
        for bit_rate in codec.bit_rates:
            self._lengths.setdefault(codec.speech_bytes(bit_rate), bit_rate)

    def set_post_filter(self, on: bool) -> None:
        """Switches the post-filter of g723 or g728 from the next frame on; a decoder begins with it."""
        function = "vspvG728SetPostFilter" if self.codec.name == "g728" else "vspvG723SetPostFilter"
        with self._object as decoder:
            done(getattr(_voice, function)(decoder, bool(on)), function)

    def process(self, frames: "Iterable[Frame | bytes | None] | Frame | bytes | None") -> Samples:
        """The samples of the next frames.

        Args:
            frames: frames of an encoder; octets of a good frame of speech; None for one that is lost. Of g723, and of a
                codec whose frames have one length, octets alone may be any part of a stream.
        """
        if isinstance(frames, (bytes, bytearray, memoryview)):
            each = self._split(bytes(frames))
        elif frames is None or isinstance(frames, Frame):
            each = [self._whole(frames)]
        else:
            each = [self._whole(frame) for frame in frames]
        size = self.codec.frame_samples
        out: Samples = _empty(len(each) * size, INT16)
        pointer = _from_buffer(SHORTS, out)
        with self._object as decoder:
            for number, frame in enumerate(each):
                octets = _from_buffer(OCTETS, frame.data) if frame.data else NULL
                if status := _decode(decoder, octets, ffi.new(_frame_type, _told(frame)), pointer + number * size):
                    done(status, "vspvDecode")
        return out

    def _split(self, octets: bytes) -> list[Frame]:
        """The frames that these octets complete."""
        if self.codec.name != "g723" and len(self._lengths) > 1:
            return [self._whole(octets)]
        octets, at, frames = self._rest + octets, 0, []
        size, bit_rate = next(iter(self._lengths.items()))
        told = ffi.new(_frame_type, (records.vspvFrameSpeech, records.vspvQualityGood, bit_rate, size))
        while at < len(octets):
            if self.codec.name == "g723":
                done(_voice.vspvG723Frame(octets[at], told), "vspvG723Frame")
            end = at + told.numBytes
            if end > len(octets):
                break
            frames.append(Frame(octets[at:end], told.bitRate, told.type, told.quality))
            at = end
        self._rest = octets[at:]
        return frames

    def _whole(self, frame: Frame | bytes | None) -> Frame:
        if frame is None:
            return Frame(b"", self.codec.bit_rates[0], quality=records.vspvQualityLost)
        if isinstance(frame, Frame):
            return frame
        data = _bytes(frame)
        if len(data) not in self._lengths:
            raise ValueError(f"{self.codec.name} has frames of {sorted(self._lengths)} octets, not of {len(data)}")
        return Frame(data, self._lengths[len(data)])
