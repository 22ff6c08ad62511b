"""The functions of libvspscy8 under their own names: what is checked of arguments, and how results and statuses come."""

import os
import pathlib
import re
import subprocess
import sys
from types import SimpleNamespace

import numpy as np
import pytest
import vspsc
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

PYTHON = pathlib.Path(__file__).parents[1]
sys.path.insert(0, str(PYTHON))
from generate import SPECIAL, Length, Lengths, functions, headers  # noqa: E402

TEXT = headers(PYTHON.parent / "include")
FUNCTIONS = {f.name: f for f in functions(TEXT) if not f.name.startswith("vspv")}
LENGTHS = Lengths().functions
DTYPES = {"Vsp8u": np.uint8, "Vsp16s": np.int16, "Vsp16u": np.uint16, "Vsp32s": np.int32, "Vsp32u": np.uint32,
          "Vsp64s": np.int64, "Vsp32f": np.float32, "Vsp64f": np.float64, "Vsp32fc": np.complex64}  # fmt: skip


# What a state remembers is the same for all functions of one length expression.
REMEMBERED = {"pState": SimpleNamespace(**{k: v for kept in Lengths().kept.values() for k, v in kept.items()})}


def dtype(parameter):
    return np.dtype(DTYPES.get(parameter.type) or getattr(vspsc, parameter.type))


def is_state(length):
    return re.fullmatch(r"\w*State_\w+", length) is not None


def counts(length, values):
    """Elements, history and rows by lengths.txt."""
    return [int(eval(text, {"max": max}, {**REMEMBERED, **values})) if text else default
            for text, default in zip(Length.read(length), (0, 0, 1))]  # fmt: skip


def described_calls():
    """Legal calls by the descriptions of the C++ tests: name, values, and (kind, elements, history, rows) of each argument."""
    output = subprocess.run([os.environ["VSPSC_BUILD"] + "/bin/print_lengths"], capture_output=True, text=True, check=True)
    for line in output.stdout.splitlines():
        call, arguments = line.split(" |")
        name, *values = call.split()
        yield name, [int(v) for v in values], [(a[0], *map(int, a[2:].split(","))) for a in arguments.split()]


def suggestion(name, seen):
    """A line of lengths.txt for a function: what fits all its calls."""
    f, parts = FUNCTIONS[name], []
    for i, p in enumerate(f.parameters):
        texts = []
        for column in range(1, 4 if p.pointers else 1):
            found = [arguments[i][column] for _, arguments in seen]
            fits = [str(found[0])] + [f"{k} * {q.name}" if k > 1 else q.name for j, q in enumerate(f.parameters)
                                      if not q.pointers for k in (1, 2) if all(k * v[j] == n for (v, _), n in zip(seen, found))]  # fmt: skip
            texts.append(fits[-1] if len(set(found)) > 1 or len(fits) > 1 else fits[0])
        if p.pointers:
            kind = "STATE" if seen[0][1][i][0] == "s" else texts[0]
            parts.append(f"{p.name}: {kind}" + (f" after {texts[1]}" if texts[1] != "0" else ""))
    return f"{name}  {'; '.join(parts)}"


def arguments_of(f, values, short=None):
    """Arrays of exactly the needed lengths, one of them an element short."""
    named = {p.name: v for p, v in zip(f.parameters, values) if not p.pointers}
    arguments = []
    for i, (p, value) in enumerate(zip(f.parameters, values)):
        if not p.pointers:
            arguments.append(float(value) if p.type in ("Vsp32f", "Vsp64f") else value)
        elif is_state(length := LENGTHS[f.name][p.name]):
            state = getattr(vspsc, length)()
            state.ready = True  # zeros; any bytes are legal
            arguments.append(state)
        else:
            elements, history, rows = counts(length, named)
            n = elements + history - (i == short)
            shape = n if p.pointers == 1 else (rows, n)
            arguments.append(np.zeros(shape, dtype(p)))
    return arguments


def test_every_exported_function_is_there():
    assert {name for name in FUNCTIONS if not SPECIAL.fullmatch(name)} == set(LENGTHS)
    for name in FUNCTIONS:
        function = getattr(vspsc, name)
        assert function.__doc__, name
    assert {name for name in dir(vspsc) if re.match("vsps[A-Z]", name)} <= set(FUNCTIONS)


def test_lengths_are_those_of_the_descriptions():
    calls = {}
    for name, values, arguments in described_calls():
        calls.setdefault(name, []).append((values, arguments))
    wrong = []
    states, sized_by = Lengths().states, Lengths().sized_by
    for name, seen in calls.items():
        if SPECIAL.fullmatch(name):
            continue
        f = FUNCTIONS[name]
        for values, arguments in seen:
            named = {p.name: v for p, v in zip(f.parameters, values) if not p.pointers}
            for p, (kind, *expected) in zip(f.parameters, arguments):
                if p.pointers:
                    length = LENGTHS.get(name, {}).get(p.name, "0")
                    got = [expected[0] if sized_by.get(length) else states.get(length), 0, 1] if is_state(length) else counts(length, named)
                    if got != expected:
                        wrong.append(f"{p.name} with {values}: {got} instead of {expected}; perhaps\n{suggestion(name, seen)}")
                        break
    assert not wrong, "\n".join(sorted(set(wrong))[:20])
    assert len(calls) >= len(LENGTHS)


# States that point to something are made by their initialisers only.
INITIALISED = {"ToneDetectState_EC_16s", "ToneDetectState_EC_32f", *(name for name, kept in Lengths().kept.items() if kept)}


@pytest.mark.filterwarnings("ignore::vspsc.VspWarning")
def test_every_function_takes_arrays_of_these_lengths_and_no_shorter_ones():
    short, done = 0, {}
    for name, values, arguments in described_calls():
        if SPECIAL.fullmatch(name) or done.setdefault(name, 0) >= 3 or INITIALISED & set(LENGTHS[name].values()):
            continue
        done[name] += 1
        f, function = FUNCTIONS[name], getattr(vspsc, name)
        try:
            assert function(*arguments_of(f, values)) >= 0
        except vspsc.VspError:
            pass  # zeros are not what every function wants
        for i, p in enumerate(f.parameters):
            if p.pointers and not is_state(LENGTHS[name][p.name]) and sum(arguments[i][1:3]) > 0:
                with pytest.raises(ValueError, match=f"{p.name} needs"):
                    function(*arguments_of(f, values, short=i))
                short += 1
                with pytest.raises((TypeError, ValueError), match=p.name):
                    function(*[b"" if j == i else a for j, a in enumerate(arguments_of(f, values))])
    assert len(done) > 440 and short > 2000


def test_results_are_the_definition():
    rng = np.random.default_rng(1)
    a, b = rng.integers(-32768, 32768, (2, 500)).astype(np.int16)
    dst = np.empty_like(a)
    assert vspsc.vspsMul_NR_16s_Sfs(a, b, dst, 500, 15) == 0
    exact = (a.astype(np.int64) * b + (1 << 14)) >> 15
    assert (dst == np.clip(exact, -32768, 32767)).all()
    # history comes first
    signal = rng.integers(-1000, 1000, 300).astype(np.int16)
    signal[180:] = signal[120:240]
    most, lag = np.zeros((2, 1), np.int32)
    vspsc.vspsAutoCorrLagMax_Inv_16s(signal[37:], 120, 20, 143, most, lag)
    assert lag[0] == 60
    # rows
    reference, taps = rng.normal(size=(2, 3, 5)).astype(np.float32).view(np.float32) + 1j * rng.normal(size=(2, 3, 5))
    reference, taps = reference.astype(np.complex64), taps.astype(np.complex64)
    out = np.zeros(5, np.complex64)
    vspsc.vspsFIRSubband_EC_32fc(reference, list(taps), out, 3, 5)
    assert np.allclose(out, (reference * taps).sum(0), atol=1e-5)


def test_statuses_are_exceptions_and_warnings():
    x = np.zeros(8, np.int16)
    with pytest.raises(vspsc.NullPtrError, match="vspsMulC_NR_16s_ISfs"):
        vspsc.vspsMulC_NR_16s_ISfs(1, None, 8, 0)
    with pytest.raises(vspsc.ScaleRangeError) as error:
        vspsc.vspsMulC_NR_16s_ISfs(1, x, 8, -1)
    assert error.value.status == vspsc.vspStsScaleRangeErr and isinstance(error.value, ValueError)
    loud, result = np.full(4, -32768, np.int16), np.zeros(1, np.int32)
    with pytest.warns(vspsc.OverflowWarning):
        assert vspsc.vspsDotProd_G729A_16s32s(loud, loud, 4, result) == vspsc.vspStsOverflow
    assert result[0] == 2**31 - 1


@pytest.mark.parametrize(
    "array, error, reason",
    [
        (np.zeros(8, np.int32), TypeError, "must be an array of int16, not of int32"),
        (np.zeros(8, ">i2"), TypeError, "not of >i2"),
        (np.zeros(16, np.int16)[::2], ValueError, "not contiguous"),
        (np.zeros(17, np.uint8)[1:].view(np.int16), ValueError, "not aligned"),
        (np.frombuffer(bytes(16), np.int16), ValueError, "read-only"),
        ([0] * 8, TypeError, "not list"),
    ],
)
def test_arrays_that_do_not_fit_are_named(array, error, reason):
    with pytest.raises(error, match=reason) as raised:
        vspsc.vspsMulC_NR_16s_ISfs(1, array, 8, 0)
    assert "pSrcDst" in str(raised.value)


def test_values_that_do_not_fit_are_refused():
    x = np.zeros(8, np.int16)
    with pytest.raises(OverflowError):
        vspsc.vspsMulC_NR_16s_ISfs(40000, x, 8, 0)
    with pytest.raises(TypeError):
        vspsc.vspsMulC_NR_16s_ISfs(1, x, 8.0, 0)
    # a numpy integer that would wrap in the computation of a length
    with pytest.raises(ValueError, match="needs 400"):
        vspsc.vspsUpsample_AMRWB_16s(np.zeros(400, np.int16), np.int8(100) * 0 + 80 * 4, np.zeros(24, np.int16), np.zeros(399, np.int16))
    assert vspsc.vspsMulC_NR_16s_ISfs(np.int16(1), x, np.int64(8), np.uint8(0)) == 0


def test_states():
    x, out = np.full(160, 1000, np.int16), np.zeros(160, np.int16)
    state = vspsc.ALCState_G169_16s()
    with pytest.raises(ValueError, match="pState has not been initialised"):
        vspsc.vspsALC_G169_16s(x, out, 160, state)
    vspsc.vspsALCInit_G169_16s(state)
    vspsc.vspsALC_G169_16s(x, out, 160, state)
    assert out[:8].tolist() == [31] * 8  # -30 dB at the start
    with pytest.raises(TypeError, match="must be a ALCState_G169_16s or None, not VADState_G729B_16s"):
        vspsc.vspsALC_G169_16s(x, out, 160, vspsc.VADState_G729B_16s())
    with pytest.raises(TypeError, match="cannot be copied"):
        __import__("copy").deepcopy(state)
    record = vspsc.VSP_GSMAMR_VAD1_STATE_INIT.copy()
    vspsc.vspsVAD1_GSMAMR_16s(np.zeros(200, np.int16), record, flag := np.zeros(1, np.int16), 0, 0)
    assert flag[0] == 0 and record["statCount"] != vspsc.VSP_GSMAMR_VAD1_STATE_INIT["statCount"]


@pytest.mark.parametrize("kind, samples, bands, scale", [("32f", np.float32, np.complex64, ()), ("16s", np.int16, vspsc.Vsp32sc, (0,))])
def test_filter_bank(kind, samples, bands, scale):
    analysis, synthesis = (("vspsSubbandAnalysis_32f32fc", "vspsSubbandSynthesis_32fc32f") if kind == "32f" else
                           ("vspsSubbandAnalysis_16s32sc_Sfs", "vspsSubbandSynthesis_32sc16s_Sfs"))  # fmt: skip
    states = []
    for _ in range(2):
        state = getattr(vspsc, f"SubbandProcessState_{kind}")()
        with pytest.raises(TypeError):
            getattr(vspsc, analysis)(None, None, state, *scale, None)
        getattr(vspsc, f"vspsSubbandProcessInit_{kind}")(state, 6, 44, 256, None, np.zeros(0, np.uint8))
        states.append(state)
    signal = (8000 * np.sin(np.arange(44 * 60) * 0.3)).astype(samples)
    out, spectrum, buffer = np.empty_like(signal), np.zeros(33, bands), np.zeros(states[0].bufferSize, np.uint8)
    for frame in range(60):
        part = slice(44 * frame, 44 * frame + 44)
        getattr(vspsc, analysis)(signal[part], spectrum, states[0], *scale, buffer)
        getattr(vspsc, synthesis)(spectrum, out[part], states[1], *(6 for _ in scale), buffer)
    spectra = [np.abs(np.fft.rfft(x[1000:2000].astype(float))) for x in (signal, out)]
    assert spectra[0].argmax() == spectra[1].argmax() and spectra[1].max() > 10 * np.sort(spectra[1])[-6]
    with pytest.raises(ValueError, match="needs 33"):
        getattr(vspsc, synthesis)(spectrum[:32], out[:44], states[1], *scale, buffer)
    with pytest.raises(vspsc.BadArgumentError):
        getattr(vspsc, f"vspsSubbandProcessInit_{kind}")(states[0], 6, 65, 256, None, None)
    assert states[0].ready and states[0].frameSize == 44


def test_controllers_know_their_filters():
    state = vspsc.SubbandControllerState_EC_32f()
    vspsc.vspsSubbandControllerInit_EC_32f(state, 40, 33, 44, 8000)
    assert (state.len, state.numSubbands) == (40, 33)
    with pytest.raises(vspsc.BadArgumentError):
        vspsc.vspsSubbandControllerInit_EC_32f(vspsc.SubbandControllerState_EC_32f(), 40, 33, 44, 11025)
    far, error, steps = np.ones((40, 33), np.complex64), np.ones(33, np.complex64), np.zeros((10, 33))
    adapt, residual = np.zeros(10, np.int32), np.zeros(33, np.float32)
    learning, double_talk = np.zeros(1, np.float32), np.zeros(1, np.int32)
    rest = (1, steps, adapt, residual, learning, double_talk, state)
    assert vspsc.vspsSubbandControllerUpdate_EC_32f(far, error, error, far, *rest) == 0
    for short in ((far[:39], error, far), (far, error[:32], far), (far, error, far[:, :32].copy())):
        with pytest.raises(ValueError, match="needs"):
            vspsc.vspsSubbandControllerUpdate_EC_32f(short[0], short[1], error, short[2], *rest)
    with pytest.raises(TypeError, match="initialised SubbandControllerState_EC_32f"):
        vspsc.vspsSubbandControllerUpdate_EC_32f(far, error, error, far, *rest[:-1], vspsc.SubbandControllerState_EC_32f())


def test_hybrid_windows_of_g728():
    state = vspsc.WinHybridState_G728_16s()
    vspsc.vspsWinHybridInit_G728_16s(10, 20, 4, state)
    with pytest.warns(vspsc.WinHybridWarning):
        vspsc.vspsWinHybrid_G728_16s(np.zeros(4, np.int16), np.zeros(11, np.int16), state)
    with pytest.raises(TypeError, match="order 50"):
        vspsc.vspsWinHybridBlock_G728_16s(np.zeros(20, np.int16), np.zeros(4, np.int16), np.zeros(51, np.int16), state)


INTEGERS = st.one_of(st.integers(-3, 320), st.sampled_from([-(2**31), 2**31 - 1, 2**31, -1, 2**63, 65536]))
SIZES = st.one_of(st.integers(0, 400), st.just(0))


@st.composite
def anything(draw, parameter):
    """An argument: mostly of the right type."""
    if draw(st.integers(0, 19)) == 0:
        return draw(st.sampled_from([None, "x", b"12345678", 1.5, -1, [], {}, np.int16(3), object()]))
    if not parameter.pointers:
        return draw(st.floats(width=32)) if parameter.type in ("Vsp32f", "Vsp64f") else draw(INTEGERS)
    length = LENGTHS.get(parameter.name, "")
    n = draw(SIZES)
    kind = dtype(parameter) if parameter.type in DTYPES or hasattr(vspsc, parameter.type) else np.dtype(np.int16)
    array = np.frombuffer(np.random.default_rng(n + len(length)).bytes(n * kind.itemsize), kind).copy()
    if parameter.pointers == 2:
        return [array] * draw(st.integers(0, 5))
    return draw(st.sampled_from([array, array, array, array[::2], array[1:], array.reshape(-1, 1)]))


@pytest.mark.filterwarnings("ignore")
@settings(max_examples=400, deadline=None, derandomize=True, database=None, suppress_health_check=list(HealthCheck))
@given(data=st.data())
def test_no_arguments_end_the_interpreter(data):
    name = data.draw(st.sampled_from(sorted(FUNCTIONS)))
    f = FUNCTIONS[name]
    arguments = []
    for p in f.parameters:
        kind = LENGTHS.get(name, {}).get(p.name, "")
        if is_state(kind) and data.draw(st.integers(0, 9)):
            state = getattr(vspsc, kind)()
            state.ready = kind not in INITIALISED
            arguments.append(state)
        else:
            arguments.append(data.draw(anything(p)))
    try:
        getattr(vspsc, name)(*arguments)
    except (TypeError, ValueError, OverflowError):
        pass
