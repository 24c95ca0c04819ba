// SPDX-License-Identifier: MIT
// The choice between the two ways to the three-centre integrals.
#include "nmr/three_centre_integrals.h"

#include "ground/message_poll.h"
#include "nmr/gaussian_three_centre.h"
#include "nmr/three_centre_quadrature.h"

void ThreeCentreIntegrals(const SlaterAtom& b, const SlaterAtom& c, const double* positionA,
                          ThreeCentreTables& tables) {
    if (b.Shell < 3 && c.Shell < 3) {
        PollMessages(200);
        QuadratureThreeCentre(b, c, positionA, tables);
    } else {
        PollMessages(500);
        GaussianThreeCentre(b, c, positionA, tables);
    }
}
