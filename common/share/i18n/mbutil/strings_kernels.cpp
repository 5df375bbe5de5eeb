// Compiled for vectors of 32 bytes.
#include "strings_kernels.h"

#ifdef __AVX2__

namespace zv {

template <ByteRanges kLeads>
const Byte* wide_run_of_leads(const Byte* first, const Byte* p) {
    return run_of_leads<kLeads>(first, p);
}

template <PairRanges kPairs>
const Byte* wide_skip_well_formed(const Byte* p, size_t left) {
    return skip_well_formed<kPairs>(p, left);
}

// The EUC and GB code sets have the same leads and trails; Big5 and EUC-TW have those leads too.
template const Byte* wide_run_of_leads<kPairsOf<SingleByteScanner>.leads>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kPairsOf<EucScanner>.leads>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kPairsOf<ShiftJisScanner>.leads>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kPairsOf<Ksc87Scanner>.leads>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kPairsOf<Ksc92Scanner>.leads>(const Byte*, const Byte*);
template const Byte* wide_skip_well_formed<kPairsOf<SingleByteScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<kPairsOf<EucScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<kPairsOf<ShiftJisScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<kPairsOf<Big5Scanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<kPairsOf<Ksc87Scanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<kPairsOf<Ksc92Scanner>>(const Byte*, size_t);

} // namespace zv

#endif
