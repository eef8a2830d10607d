// PBicLocalOpt, the interface of an optimiser that refines a property bicluster in place.
#ifndef VESK_BIC_PBICLOCALOPT_H
#define VESK_BIC_PBICLOCALOPT_H

class PropVarBiclust;

// What the property hash search needs from an optimiser: grow one seed bicluster into a result.
class PBicLocalOpt {
public:
    virtual ~PBicLocalOpt() = default;
    virtual void grow(PropVarBiclust& bic) = 0;
};

#endif
