// Compiled for vectors of 32 bytes.
#include "strings_kernels.h"

#ifdef __AVX2__

namespace zv {

template <auto kLeads>
const Byte* wide_run_of_leads(const Byte* first, const Byte* p) {
    return run_of_leads<kLeads>(first, p);
}

template <class Pairs>
const Byte* wide_skip_well_formed(const Byte* p, size_t left) {
    return skip_well_formed<Pairs>(p, left);
}

// The EUC and GB code sets have the same leads and trails; Big5 and EUC-TW have those leads too.
template const Byte* wide_run_of_leads<kLeadsOf<SingleByteScanner>>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kLeadsOf<EucScanner>>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kLeadsOf<ShiftJisScanner>>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kLeadsOf<Ksc87Scanner>>(const Byte*, const Byte*);
template const Byte* wide_run_of_leads<kLeadsOf<Ksc92Scanner>>(const Byte*, const Byte*);
template const Byte* wide_skip_well_formed<PairsOf<SingleByteScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<PairsOf<EucScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<PairsOf<ShiftJisScanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<PairsOf<Big5Scanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<PairsOf<Ksc87Scanner>>(const Byte*, size_t);
template const Byte* wide_skip_well_formed<PairsOf<Ksc92Scanner>>(const Byte*, size_t);

} // namespace zv

#endif
