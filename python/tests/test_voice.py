"""Codecs, canceller, detectors, pitch, level: the same for any blocks, and the same as the program vsps."""

import os
import pathlib
import re
import subprocess
import threading
import wave

import numpy as np
import pytest
import vspsc
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

VSPS = os.environ["VSPSC_BUILD"] + "/bin/vsps"


def speech(seconds, rate=8000, seed=1):
    """Bursts of a voice with a falling pitch, and pauses with a little noise."""
    rng = np.random.default_rng(seed)
    t = np.arange(int(seconds * rate)) / rate
    f0 = 120 + 30 * np.sin(2 * np.pi * 0.5 * t)
    phase = 2 * np.pi * np.cumsum(f0) / rate
    voice = sum(np.sin(k * phase) / k for k in range(1, 12))
    envelope = np.clip(np.sin(2 * np.pi * 0.7 * t), 0, None)
    return np.round(4000 * envelope * voice + 20 * rng.normal(size=t.size)).clip(-32768, 32767).astype(np.int16)


def in_blocks(signal, seed=2):
    rng, at = np.random.default_rng(seed), 0
    while at < signal.size:
        n = int(rng.integers(0, 700))
        yield signal[at : at + n]
        at += n


def write_wave(path, samples, rate):
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1), file.setsampwidth(2), file.setframerate(rate)
        file.writeframes(samples.tobytes())


@pytest.mark.parametrize("name", vspsc.codecs())
def test_codecs(name):
    codec = vspsc.Codec(name)
    signal = speech(1.03, codec.sampling_rate)
    whole = codec.encoder()
    frames = whole.process(signal) + whole.finish()
    assert len(frames) == -(-signal.size // codec.frame_samples) and frames[0].bit_rate == codec.bit_rates[0]
    parts = codec.encoder()
    assert [f for block in in_blocks(signal) for f in parts.process(block)] + parts.finish() == frames
    decoded = codec.decoder().process(frames)
    assert decoded.size == len(frames) * codec.frame_samples
    lossy = codec.decoder()
    lost = np.concatenate([lossy.process(None if i % 10 == 3 else frame) for i, frame in enumerate(frames)])
    assert lost.size == decoded.size and (lost != decoded).any()
    if len({codec.speech_bytes(r) for r in codec.bit_rates}) == 1:
        octets, stream = b"".join(f.data for f in frames), codec.decoder()
        assert (np.concatenate([stream.process(octets[:33]), stream.process(octets[33:])]) == decoded).all()
    if codec.has_dtx:
        quiet = codec.encoder(codec.bit_rates[-1], dtx=1).process(np.zeros(signal.size * 2, np.int16))
        assert quiet[0].bit_rate == codec.bit_rates[-1] and min(len(f.data) for f in quiet) < len(frames[0].data)


def decoded_by(codec, frames, post_filter):
    decoder = codec.decoder()
    decoder.set_post_filter(post_filter)
    return decoder.process(frames)


def test_filters_can_be_left_out():
    signal = speech(1) + np.int16(500)
    for name in ("g723", "g728"):
        codec = vspsc.Codec(name)
        frames = codec.encoder().process(signal)
        assert (decoded_by(codec, frames, True) == codec.decoder().process(frames)).all()
        assert (decoded_by(codec, frames, False) != codec.decoder().process(frames)).any()
    encoder = vspsc.Codec("g723").encoder()
    encoder.set_high_pass(False)
    heard = vspsc.Codec("g723").decoder().process(encoder.process(signal))
    assert heard.mean() > vspsc.Codec("g723").decoder().process(vspsc.Codec("g723").encoder().process(signal)).mean() + 100
    for refused in (lambda: vspsc.Codec("g729").decoder().set_post_filter(False), lambda: vspsc.Codec("g728").encoder().set_high_pass(False)):
        with pytest.raises(vspsc.BadArgumentError):
            refused()


@pytest.mark.parametrize("name, rate, magic, forms", [("amr", 8000, b"#!AMR\n", ["storage", "if1", "if2"]), ("amrwb", 16000, b"#!AMR-WB\n", ["storage"])])
def test_frames_as_they_are_stored_and_sent(tmp_path, name, rate, magic, forms):
    codec, signal = vspsc.Codec(name), np.append(speech(1, rate), np.zeros(rate, np.int16))
    frames = codec.encoder(codec.bit_rates[1], dtx=1).process(signal)
    assert len({f.type for f in frames}) > 2
    for form in forms:
        octets, back = b"".join(codec.pack_frame(f, form) for f in frames), []
        while octets:
            frame, used = codec.unpack_frame(octets, form)
            back, octets = [*back, frame], octets[used:]
        assert [(f.type, f.data) for f in back] == [(f.type, f.data) for f in frames]
    write_wave(tmp_path / "in.wav", signal, rate)
    out = tmp_path / f"out.{'amr' if name == 'amr' else 'awb'}"
    subprocess.run([VSPS, "encode", tmp_path / "in.wav", out, "--rate", str(codec.bit_rates[1]), "--dtx"], check=True, capture_output=True)
    assert out.read_bytes() == magic + b"".join(map(codec.pack_frame, frames))
    for aligned in (False, True):
        payload = codec.pack_payload(frames[:60], aligned, codec.bit_rates[0])
        assert codec.unpack_payload(payload, aligned)[1] == codec.bit_rates[0]
        assert [(f.type, f.data) for f in codec.unpack_payload(payload, aligned)[0]] == [(f.type, f.data) for f in frames[:60]]
    for refused in (lambda: codec.pack_payload([]), lambda: codec.unpack_payload(b""), lambda: codec.unpack_payload(payload[:40], True),
                    lambda: codec.pack_frame(frames[0], "rtp"), lambda: vspsc.Codec("g729").pack_payload(frames)):  # fmt: skip
        with pytest.raises(ValueError):
            refused()


def test_a_stream_of_g723_tells_its_frames(tmp_path):
    signal = np.append(speech(1), np.zeros(8000, np.int16))
    write_wave(tmp_path / "in.wav", signal, 8000)
    subprocess.run([VSPS, "encode", tmp_path / "in.wav", tmp_path / "out.g723", "--dtx"], check=True, capture_output=True)
    codec, octets = vspsc.Codec("g723"), (tmp_path / "out.g723").read_bytes()
    encoder, decoder = codec.encoder(dtx=1), codec.decoder()
    frames = encoder.process(signal) + encoder.finish()
    heard = np.concatenate([decoder.process(octets[:100]), decoder.process(octets[100:])])
    assert (heard == codec.decoder().process(frames)).all()


def test_every_function_of_the_voice_layer_is_reached():
    root = pathlib.Path(__file__).parents[2]
    headers = "".join(path.read_text() for path in (root / "include/vspsvoice").glob("*.h"))
    names = set(re.findall(r"^\w[^(\n]*\bvspv(\w+)\(", headers, re.M))
    code = "".join(path.read_text() for path in (root / "python/vspsc").glob("*.py"))
    reached = {name for name in names if f"vspv{name}" in code or f"vspv{re.sub('AMR(WB)?', '{...}', name)}" in re.sub(r"\{[^}]*\}", "{...}", code)}
    assert len(names) > 50 and names - reached <= {"DenoiserProcess_16s", "DenoiserProcess_32f", "EchoCancellerDefaults"}


@pytest.mark.skipif(not os.path.exists(VSPS), reason="the tool is not built")
@pytest.mark.parametrize("name, extension, rate", [("g722", "g722", 16000), ("g729a", "g729a", 8000), ("gsm", "gsm", 8000)])
def test_codecs_are_those_of_the_tool(tmp_path, name, extension, rate):
    signal = speech(1, rate)
    write_wave(tmp_path / "in.wav", signal, rate)
    subprocess.run([VSPS, "encode", "in.wav", f"out.{extension}"], cwd=tmp_path, check=True, capture_output=True)
    assert (tmp_path / f"out.{extension}").read_bytes() == b"".join(f.data for f in vspsc.Codec(name).encoder().process(signal))


@pytest.mark.skipif(not os.path.exists(VSPS), reason="the tool is not built")
def test_detectors_are_those_of_the_tool(tmp_path):
    signal = speech(3)
    write_wave(tmp_path / "in.wav", signal, 8000)

    def table(command):
        subprocess.run([VSPS, command, "in.wav", "--csv", "out.csv"], cwd=tmp_path, check=True, capture_output=True)
        return np.genfromtxt(tmp_path / "out.csv", delimiter=",", names=True)

    decisions = vspsc.vad(signal)
    assert 0 < decisions.sum() < decisions.size
    told = table("vad")
    assert (told[[n for n in told.dtype.names if "speech" in n][0]] == decisions).all()
    points, told = vspsc.pitch(signal), table("pitch")
    assert points.size == told.size
    column = [n for n in told.dtype.names if n.startswith("f0")][0]
    assert np.allclose(told[column], points["f0"], rtol=1e-3)


def test_any_blocks_give_the_same():
    signal = speech(2)
    for make in (vspsc.SpeechDetector, vspsc.PitchTracker):
        whole, parts = make(), make()
        expected = np.concatenate([whole.process(signal), whole.finish()])
        got = np.concatenate([*map(parts.process, in_blocks(signal)), parts.finish()])
        assert got.tobytes() == expected.tobytes()
    whole, parts = vspsc.LevelControl(), vspsc.LevelControl()
    assert (np.concatenate([*map(parts.process, in_blocks(signal))]) == whole.process(signal)).all()
    assert whole.latency == 7 and (vspsc.level(signal)[: -whole.latency] == vspsc.LevelControl().process(signal)[whole.latency :]).all()


def test_levels_and_pitch_are_right():
    signal = np.tile(speech(4), 3)
    rms = lambda x: 20 * np.log10(np.sqrt(np.mean((x / 32768.0) ** 2)))  # noqa: E731
    quiet = (signal * 0.4).astype(np.int16)
    assert abs(rms(vspsc.level(quiet)[-32000:]) - rms(vspsc.level(signal)[-32000:])) < abs(rms(quiet) - rms(signal)) / 2
    points = vspsc.pitch(signal)
    voiced = points[points["voiced"] == 1]["f0"]
    assert 85 < np.median(voiced) < 155


@pytest.mark.parametrize("rate", [8000, 16000, 22050, 32000])
def test_denoiser(rate, tmp_path):
    signal = np.concatenate([(300 * np.random.default_rng(4).normal(size=2 * rate)).astype(np.int16), speech(1, rate)])
    whole, parts = vspsc.Denoiser(rate, "high"), vspsc.Denoiser(rate, "high")
    out = whole.process(np.append(signal, np.zeros(whole.latency, np.int16)))[whole.latency :]
    assert (np.concatenate([*map(parts.process, in_blocks(signal))])[parts.latency :] == out[: -parts.latency]).all()
    write_wave(tmp_path / "in.wav", signal, rate)
    subprocess.run([VSPS, "denoise", tmp_path / "in.wav", tmp_path / "out.wav", "--mode", "high"], check=True, capture_output=True)
    with wave.open(str(tmp_path / "out.wav")) as file:
        assert file.getframerate() == rate and file.readframes(signal.size) == out.tobytes()
    floats = vspsc.Denoiser(rate, "off")
    floats.set_mode("high")
    smooth = floats.process(np.append(signal, np.zeros(whole.latency, np.int16)).astype(np.float32))[whole.latency :]
    assert smooth.dtype == np.float32 and abs(smooth - out).max() <= 1
    noise = vspsc.Denoiser(rate)
    noise.process(signal[: 2 * rate])
    assert noise.presence < 0.1


@pytest.mark.parametrize("rate", [8000, 16000])
def test_answer_tones(rate):
    t = np.arange(3 * rate)
    signal = (8000 * np.sin(2 * np.pi * 2100 * t / rate) * (-1) ** (t // (0.45 * rate))).astype(np.int16)
    (found,) = vspsc.tone(np.concatenate([signal, np.zeros(rate, np.int16)]), rate)
    assert found.kind == "end" and found.reversals >= 3 and abs(found.end - 3 * rate) < 0.1 * rate
    parts = vspsc.ToneDetector(rate)
    events = [e for block in in_blocks(signal) for e in parts.process(block)]
    assert [e.kind for e in events].count("reversal") == events[-1].reversals - (events[0].reversals - 1)


@pytest.mark.parametrize("engine, kind", [("subband", np.int16), ("fullband", np.int16), ("subband", np.float32)])
def test_echo_canceller(engine, kind):
    rng = np.random.default_rng(3)
    far = (3000 * rng.normal(size=8000 * 6)).clip(-32768, 32767).astype(kind)
    near = (0.5 * np.roll(far, 100)).astype(kind)
    canceller = vspsc.EchoCanceller(8000, 32, engine=engine, max_delay_ms=0)
    out = np.concatenate([canceller.process(far[i : i + 80], near[i : i + 80]) for i in range(0, far.size, 80)])
    assert out.dtype == kind and (vspsc.EchoCanceller(8000, 32, engine=engine, max_delay_ms=0).process(far, near) == out).all()
    power = lambda x: np.mean(x[-8000:].astype(float) ** 2)  # noqa: E731
    assert power(out) < power(near) / 100
    assert canceller.status["echoFound"] == 1 and canceller.latency < 900
    again, (one, two, three) = vspsc.EchoCanceller(8000, 32, engine=engine, max_delay_ms=0), np.zeros((3, 80), kind)
    for i in range(0, 8000, 80):  # the same arrays again and again, and in place
        one[:], two[:] = far[i : i + 80], near[i : i + 80]
        assert (again.process(one, two, three if i % 160 else two) == out[i : i + 80]).all()


def test_objects_refuse_what_does_not_fit():
    x = np.zeros(80, np.int16)
    canceller = vspsc.EchoCanceller()
    for far, near in [(x, x[:40]), (x, x.astype(np.float32)), (x.reshape(2, 40), x.reshape(2, 40)), (x.astype(float),) * 2, (None, x)]:
        with pytest.raises((ValueError, TypeError)):
            canceller.process(far, near)
    with pytest.raises((ValueError, BufferError)):
        canceller.process(np.zeros(160, np.int16)[::2], x)
    assert canceller.process(x[:0], x[:0]).size == 0
    read_only, short = x.copy(), x.copy()
    read_only.setflags(write=False)
    for out in (read_only, x[:40], x.astype(np.float32), np.zeros(160, np.int16)[::2], np.frombuffer(bytearray(161), np.int16, 80, 1), [0] * 80):
        with pytest.raises((ValueError, BufferError)):
            canceller.process(x, x, out)
    canceller.process(short, x, short)
    short.resize(10, refcheck=False)  # the memory that it had is gone
    with pytest.raises(ValueError):
        canceller.process(short, x, short)
    for wrong in (lambda: vspsc.EchoCanceller(11025), lambda: vspsc.EchoCanceller(8000, 1000), lambda: vspsc.vad(x, 44100),
                  lambda: vspsc.pitch(x, 16000), lambda: vspsc.Denoiser(11025), lambda: vspsc.Denoiser(mode="?"), lambda: vspsc.EchoCanceller(engine="?"), lambda: vspsc.Codec("mp3"),
                  lambda: vspsc.Codec("g722").encoder(1), lambda: vspsc.Codec("pcmu").encoder(dtx=1),
                  lambda: vspsc.Codec("g729").decoder().process(b"12345"[:3] and [b"123"])):  # fmt: skip
        with pytest.raises(ValueError):
            wrong()
    for octets in (5, [5], "speech"):
        with pytest.raises(TypeError):
            vspsc.Codec("pcmu").decoder().process(octets)
    for samples in (x.astype(float), x.reshape(8, 10), [1, 2], None):
        with pytest.raises(TypeError, match="one-dimensional numpy array of int16"):
            vspsc.vad(samples)
    assert vspsc.vad(np.zeros((320, 2), np.int16)[:, 0]).size == 2  # a channel


def test_two_threads_do_not_share_an_object():
    canceller, big, refused = vspsc.EchoCanceller(), np.zeros(800000, np.int16), []

    def work():
        try:
            canceller.process(big, big)
        except RuntimeError as error:
            refused.append(str(error))

    threads = [threading.Thread(target=work) for _ in range(4)]
    [t.start() for t in threads]
    [t.join() for t in threads]
    assert 0 < len(refused) < 4 and "another thread" in refused[0]


SCALARS = st.one_of(st.none(), st.integers(-5, 5), st.sampled_from([8000, 16000, 2**31, 1e300, float("nan"), "g722", "amr", "", "\0", b"x"]))
ARRAYS = st.builds(lambda n, kind, step: np.zeros(n, kind)[::step], st.integers(0, 500),
                   st.sampled_from([np.int16, np.int16, np.float32, np.int8, ">i2"]), st.sampled_from([1, 1, 2, -1]))  # fmt: skip


@pytest.mark.filterwarnings("ignore")
@settings(max_examples=250, deadline=None, derandomize=True, database=None, suppress_health_check=list(HealthCheck))
@given(data=st.data())
def test_nothing_ends_the_interpreter(data):
    anything = st.one_of(SCALARS, ARRAYS, ARRAYS)
    try:
        made = data.draw(st.sampled_from([vspsc.vad, vspsc.level, vspsc.pitch, vspsc.tone, vspsc.EchoCanceller, vspsc.Codec,
                                          vspsc.SpeechDetector, vspsc.LevelControl, vspsc.Denoiser, vspsc.ToneDetector]))  # fmt: skip
        result = made(*data.draw(st.lists(anything, max_size=4)))
        if isinstance(result, vspsc.EchoCanceller):
            result.process(data.draw(anything), data.draw(anything), data.draw(anything))
        elif isinstance(result, vspsc.Codec):
            result.encoder(*data.draw(st.lists(SCALARS, max_size=2))).process(data.draw(anything))
        elif hasattr(result, "process"):
            result.process(data.draw(anything)), result.finish()
    except (TypeError, ValueError, OverflowError, AttributeError):
        pass


@settings(max_examples=150, deadline=None, derandomize=True, database=None, suppress_health_check=list(HealthCheck))
@given(name=st.sampled_from(vspsc.codecs()), data=st.binary(max_size=400), kind=st.integers(-1, 6), quality=st.integers(-1, 4),
       rate=st.integers(-1, 9))  # fmt: skip
def test_any_octets_are_decoded_or_refused(name, data, kind, quality, rate):
    decoder = vspsc.Codec(name).decoder()
    rates = decoder.codec.bit_rates
    for taken in (decoder.codec.unpack_payload, decoder.codec.unpack_frame):
        try:
            found = taken(data)
            assert isinstance(found[0], list) or 0 < found[1] <= len(data)
        except ValueError:
            pass
    for frame in (vspsc.Frame(data, rates[rate] if 0 <= rate < len(rates) else rate, kind, quality), data, None):
        try:
            assert decoder.process(frame).size % decoder.codec.frame_samples == 0
        except ValueError:
            pass
