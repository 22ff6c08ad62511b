// The coder of G.728 Annex G without lost frames, written plainly: block after block by its definition, sample by sample,
// with exact sums of 64 bits. A second time, with BENCH_G728_CHECKED, each addition to a sum also tells whether it leaves
// 32 bits, as the basic operators of the standards tell by their flag.
#include "vspsc/types.h"

#undef BENCH_G728
#if defined(BENCH_G728_CHECKED)
#define BENCH_G728 g728_checked
#else
#define BENCH_G728 g728
#endif

namespace bench::BENCH_G728 {

constexpr int kVector = 5, kCycle = 4, kFrame = kCycle * kVector, kOrder = 10, kSynthesisOrder = 50;

struct Vector {
    Vsp16s x[kVector];
    int scale;
};

// Samples in a hybrid window, with a recursive part.
struct HybridWindow {
    int order, nonRecursive, block, attenuation;
    const Vsp16s* window;
    Vsp16s samples[105] = {}, recursive[51] = {};
    int scales[21], scale = 31;

    HybridWindow(int order, int nonRecursive, int block, int attenuation, const Vsp16s* window);
    int length() const { return order + nonRecursive + block; }
    bool correlateSamples(const Vsp16s* src, Vsp16s* r);  // blocks 36 and 43
    bool correlateVectors(const Vector* src, Vsp16s* r);  // block 49

  private:
    bool correlate(const Vsp16s* weighted, int level, Vsp16s* r);
};

struct Gain {
    Vsp16s mantissa;
    int scale;
};

// Recursion of Levinson and Durbin, which goes on where it stopped.
struct Recursion {
    Vsp16s a[kSynthesisOrder], alpha, reflection;
    int halvings;
    bool run(const Vsp16s* r, int from, int to);
};

// The synthesis filter in the steps over a cycle of four vectors, and the prediction of the gain.
struct Adaptation {
    Vsp16s lpc[kSynthesisOrder] = {}, next[kSynthesisOrder] = {}, r[kSynthesisOrder + 1] = {};
    Vsp16s gainFilter[kOrder] = {-16384}, gains[kOrder] = {0, 0, 0, 0, 0, 0, 0, -16384, -16384, -16384};
    Recursion recursion{};
    bool valid = false;
    HybridWindow window, gainWindow;

    Adaptation();
    void analyse(const Vector* cycle);
    void complete();
    void use();
    Vsp16s predict(Gain& gain) const;
    void update(Vsp16s predicted, int index);
};

struct SynthesisMemory {
    Vector past[kSynthesisOrder / kVector], pending;  // the newest first

    SynthesisMemory();
    void ring(const Vsp16s* lpc);
    const Vector& excite(const Vsp16s* lpc, const Vector& excitation, Vector& response);
};

class Encoder {
  public:
    void encode(const Vsp16s* samples, Vsp16s* indices);  // of four vectors

  private:
    int search(const Vsp16s* target, int scale) const;
    void weigh(const Vsp16s* x, Vsp16s* past, Vsp16s* y) const;
    void respond();
    void adaptWeighting();
    Vsp16s encodeVector(const Vsp16s* samples, Vector& coded);

    Adaptation adaptation_;
    SynthesisMemory memory_;
    HybridWindow window_{weightingWindow()};
    Vsp16s zero_[kOrder] = {}, pole_[kOrder] = {}, response_[kVector] = {8192}, energies_[128];
    Vsp16s recent_[kFrame] = {}, input_[kOrder] = {}, weighted_[kOrder] = {}, coded_[kOrder] = {};
    bool started_ = false;

    static HybridWindow weightingWindow();
};

class Decoder {
  public:
    void decode(const Vsp16s* indices, Vsp16s* samples);  // of four vectors, with the post-filter

  private:
    void postFilter(const Vector& speech, bool withPitch, Vsp16s* samples);
    void followPitch();
    void adaptLongTerm();

    Adaptation adaptation_;
    SynthesisMemory memory_;
    Vsp16s zero_[kOrder] = {}, pole_[kOrder] = {}, inverse_[kOrder] = {}, tilt_ = 0, gain_ = 16384;
    Vsp16s speech_[kOrder] = {}, longTerm_[kOrder] = {}, shortTerm_[kOrder] = {};
    Vsp16s residual_[240] = {}, past_[240] = {}, lowPass_[3] = {}, decimated_[60] = {};
    Vsp16s direct_ = 16384, delayed_ = 0;
    int pitch_ = 50;
};

}  // namespace bench::BENCH_G728
