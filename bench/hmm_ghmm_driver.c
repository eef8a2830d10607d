/* The casino (fair and loaded die) in GHMM's C library: Viterbi, forward and one Baum-Welch
   iteration over the rolls of a file (one code 0-5 per character), timed in CPU seconds.
   Built by bench/hmm_bench.sh when libghmm-dev is installed. */
#include <ghmm/foba.h>
#include <ghmm/ghmm.h>
#include <ghmm/model.h>
#include <ghmm/reestimate.h>
#include <ghmm/sequence.h>
#include <ghmm/viterbi.h>

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

/* libghmm1 links ATLAS's C LAPACK symbols for its continuous models, but Debian's package pulls in
   a LAPACK that lacks them; the discrete models never call them. */
int clapack_dgetrf(void) { abort(); }
int clapack_dgetri(void) { abort(); }
int clapack_dpotrf(void) { abort(); }

static double cpu(void) { return (double)clock() / CLOCKS_PER_SEC; }

static ghmm_dmodel* casino(void) {
    int deg[2] = {2, 2};
    ghmm_dmodel* mo = ghmm_dmodel_calloc(6, 2, GHMM_kDiscreteHMM, deg, deg);
    const double a[2][2] = {{0.95, 0.05}, {0.1, 0.9}};
    for (int i = 0; i < 2; ++i) {
        ghmm_dstate* s = &mo->s[i];
        s->pi = 0.5;
        s->out_states = 2;
        s->in_states = 2;
        for (int b = 0; b < 6; ++b)
            s->b[b] = i == 0 ? 1.0 / 6.0 : (b == 5 ? 0.5 : 0.1);
        for (int j = 0; j < 2; ++j) {
            s->out_id[j] = j;
            s->out_a[j] = a[i][j];
            s->in_id[j] = j;
            s->in_a[j] = a[j][i];
        }
    }
    return mo;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: hmm_ghmm_driver <rolls file>\n");
        return 2;
    }
    FILE* f = fopen(argv[1], "r");
    if (!f)
        return 1;
    int cap = 1 << 20, len = 0, c;
    int* o = malloc(sizeof(int) * cap);
    while ((c = fgetc(f)) != EOF) {
        if (c < '0' || c > '5')
            continue;
        if (len == cap)
            o = realloc(o, sizeof(int) * (cap *= 2));
        o[len++] = c - '0';
    }
    fclose(f);

    ghmm_dmodel* mo = casino();
    double lp = 0, t;
    int pathlen = 0;
    t = cpu();
    int* path = ghmm_dmodel_viterbi(mo, o, len, &pathlen, &lp);
    printf("ghmm\tviterbi\t%d\t%.4f\t%.6f\n", len, cpu() - t, lp);
    free(path);
    t = cpu();
    ghmm_dmodel_logp(mo, o, len, &lp);
    printf("ghmm\tforward\t%d\t%.4f\t%.6f\n", len, cpu() - t, lp);

    ghmm_dseq* sq = ghmm_dseq_calloc(1);
    sq->seq[0] = o;
    sq->seq_len[0] = len;
    sq->seq_w[0] = 1.0;
    t = cpu();
    ghmm_dmodel_baum_welch_nstep(mo, sq, 1, 0.0);
    printf("ghmm\tem_iteration\t%d\t%.4f\t%.6f\n", len, cpu() - t, mo->s[0].out_a[0]);
    ghmm_dmodel_free(&mo);
    return 0;
}
