// Math checked against independent double-precision arithmetic and geometric
// properties, plus the special cases that the camera depends on.
#include "zyntest.h"
#include "zynmath.h"

#include <random>

static const double PI = 3.14159265358979323846;

static ::testing::AssertionResult MatrixNear(const D3DXMATRIX& got, const double want[16], double fTol)
{
    for (int i = 0; i < 16; i++) {
        double g = (&got._11)[i];
        if (fabs(g - want[i]) > fTol)
            return ::testing::AssertionFailure()
                   << "element _" << (i / 4 + 1) << (i % 4 + 1) << " is " << g << ", expected " << want[i];
    }
    return ::testing::AssertionSuccess();
}

static ::testing::AssertionResult VecNear(const D3DXVECTOR3& got, double x, double y, double z, double fTol)
{
    if (fabs(got.x - x) > fTol || fabs(got.y - y) > fTol || fabs(got.z - z) > fTol)
        return ::testing::AssertionFailure() << "got (" << got.x << ", " << got.y << ", " << got.z
                                             << "), expected (" << x << ", " << y << ", " << z << ")";
    return ::testing::AssertionSuccess();
}

static D3DXMATRIX RandomMatrix(std::mt19937& rng)
{
    std::uniform_real_distribution<float> dist(-4.0f, 4.0f);
    D3DXMATRIX m;
    for (int i = 0; i < 16; i++)
        (&m._11)[i] = dist(rng);
    return m;
}

TEST(MathVector, NormalizeLeavesNearUnitVectorsUntouched)
{
    // squared length 1.000005 is inside the tolerance: no rescale at all
    D3DXVECTOR3 v(sqrtf(1.000005f), 0.0f, 0.0f), out;
    D3DXVec3Normalize(&out, &v);
    EXPECT_EQ(out.x, v.x);

    D3DXVECTOR3 w(3.0f, 4.0f, 0.0f);
    D3DXVec3Normalize(&w, &w);
    EXPECT_TRUE(VecNear(w, 0.6, 0.8, 0.0, 1e-7)) << "in place";
}

TEST(MathVector, NormalizeOfTinyVectorsIsZero)
{
    static const float cases[][3] = {{0, 0, 0}, {1e-5f, 0, 0}, {0, 7e-6f, 7e-6f}};
    for (size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); i++) {
        D3DXVECTOR3 v(cases[i][0], cases[i][1], cases[i][2]), out(9, 9, 9);
        D3DXVec3Normalize(&out, &v);
        EXPECT_TRUE(VecNear(out, 0, 0, 0, 0)) << "case " << i;
    }
    // just above the bound it is scaled to unit length
    D3DXVECTOR3 v(2e-5f, 0, 0), out;
    D3DXVec3Normalize(&out, &v);
    EXPECT_TRUE(VecNear(out, 1, 0, 0, 1e-6));
}

TEST(MathVector, CrossAndDotMatchHandWork)
{
    D3DXVECTOR3 a(1, 2, 3), b(4, 5, 6), c;
    D3DXVec3Cross(&c, &a, &b);
    EXPECT_TRUE(VecNear(c, -3, 6, -3, 0));
    D3DXVec3Cross(&a, &a, &b);  // output aliasing an input
    EXPECT_TRUE(VecNear(a, -3, 6, -3, 0));
    EXPECT_EQ(D3DXVec3Dot(&b, &b), 77.0f);
    EXPECT_FLOAT_EQ(D3DXVec3Length(&b), (float)sqrt(77.0));
    D3DXVECTOR3 d = (b - D3DXVECTOR3(1, 1, 1)) / 2.0f;
    EXPECT_TRUE(VecNear(d, 1.5, 2, 2.5, 0));
}

TEST(MathVector, TransformCoordDividesOnlyAwayFromUnitW)
{
    D3DXMATRIX m;
    D3DXMatrixIdentity(&m);
    m._41 = 1; m._42 = 2; m._43 = 3;
    D3DXVECTOR3 v(1, 1, 1);
    D3DXVec3TransformCoord(&v, &v, &m);
    EXPECT_TRUE(VecNear(v, 2, 3, 4, 0)) << "affine, in place";

    m._44 = 2.0f;  // W = 2 now: everything halves
    D3DXVECTOR3 w(1, 1, 1), out;
    D3DXVec3TransformCoord(&out, &w, &m);
    EXPECT_TRUE(VecNear(out, 1, 1.5, 2, 1e-6));

    m._44 = 1.000005f;  // inside the tolerance: no division
    D3DXVec3TransformCoord(&out, &w, &m);
    EXPECT_TRUE(VecNear(out, 2, 3, 4, 0));

    D3DXVec3TransformNormal(&w, &w, &m);
    EXPECT_TRUE(VecNear(w, 1, 1, 1, 0)) << "normals ignore the translation";
}

TEST(MathMatrix, MultiplyMatchesDoublePrecisionWithEveryAliasing)
{
    std::mt19937 rng(7);
    for (int nCase = 0; nCase < 50; nCase++) {
        D3DXMATRIX a = RandomMatrix(rng), b = RandomMatrix(rng);
        double want[16];
        for (int i = 0; i < 4; i++)
            for (int j = 0; j < 4; j++) {
                double s = 0;
                for (int k = 0; k < 4; k++)
                    s += (double)a(i, k) * b(k, j);
                want[i * 4 + j] = s;
            }
        D3DXMATRIX out, outA = a, outB = b;
        D3DXMatrixMultiply(&out, &a, &b);
        EXPECT_TRUE(MatrixNear(out, want, 1e-4)) << "case " << nCase;
        D3DXMatrixMultiply(&outA, &outA, &b);
        EXPECT_TRUE(MatrixNear(outA, want, 1e-4)) << "out is A, case " << nCase;
        D3DXMatrixMultiply(&outB, &a, &outB);
        EXPECT_TRUE(MatrixNear(outB, want, 1e-4)) << "out is B, case " << nCase;
    }
    // all three the same matrix: the square
    D3DXMATRIX s;
    D3DXMatrixIdentity(&s);
    s._12 = 2;
    D3DXMatrixMultiply(&s, &s, &s);
    EXPECT_EQ(s._12, 4.0f);
    EXPECT_EQ(s._11, 1.0f);
}

TEST(MathMatrix, InverseTimesMatrixIsIdentity)
{
    static const double identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::mt19937 rng(11);
    int nTested = 0;
    for (int nCase = 0; nCase < 100; nCase++) {
        D3DXMATRIX m = RandomMatrix(rng), inv, prod;
        float fDet = 0;
        ASSERT_TRUE(D3DXMatrixInverse(&inv, &fDet, &m) == &inv) << "case " << nCase;
        if (fabs(fDet) < 1.0f)
            continue;  // badly conditioned: float error dominates
        D3DXMatrixMultiply(&prod, &inv, &m);
        EXPECT_TRUE(MatrixNear(prod, identity, 1e-3)) << "case " << nCase << ", det " << fDet;
        nTested++;
    }
    EXPECT_GT(nTested, 50);
}

TEST(MathMatrix, InverseOfSingularMatrixLeavesOutputAlone)
{
    D3DXMATRIX m, out;
    for (int i = 0; i < 16; i++)
        (&m._11)[i] = (float)(i + 1);  // rows are linearly dependent
    for (int i = 0; i < 16; i++)
        (&out._11)[i] = 42.0f;
    float fDet = 5.0f;
    EXPECT_TRUE(D3DXMatrixInverse(&out, &fDet, &m) == NULL);
    EXPECT_EQ(fDet, 0.0f);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ((&out._11)[i], 42.0f) << "element " << i;
    EXPECT_TRUE(D3DXMatrixInverse(&out, NULL, &m) == NULL) << "null determinant pointer";

    // a projective (non-affine) matrix still inverts: all four rows count
    D3DXMATRIX p;
    D3DXMatrixPerspectiveFov(&p, 1.0f, 0.75f, 1.0f, 100.0f);
    EXPECT_TRUE(D3DXMatrixInverse(&out, NULL, &p) == &out);
}

TEST(MathMatrix, RotationsKeepLengthsAndFollowTheRightHand)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> dist(-3.0f, 3.0f);
    for (int nCase = 0; nCase < 50; nCase++) {
        D3DXVECTOR3 axis(dist(rng), dist(rng), dist(rng)), v(dist(rng), dist(rng), dist(rng)), out;
        D3DXMATRIX r;
        D3DXMatrixRotationAxis(&r, &axis, dist(rng));
        D3DXVec3TransformCoord(&out, &v, &r);
        EXPECT_NEAR(D3DXVec3Length(&out), D3DXVec3Length(&v), 1e-4) << "case " << nCase;
        // the axis itself stays put
        D3DXVECTOR3 n;
        D3DXVec3Normalize(&n, &axis);
        D3DXVec3TransformNormal(&out, &n, &r);
        EXPECT_TRUE(VecNear(out, n.x, n.y, n.z, 1e-5)) << "case " << nCase;
    }
    // about Y by a quarter turn, +x goes to -z for row vectors with this matrix
    D3DXMATRIX ry, ra;
    D3DXMatrixRotationY(&ry, (float)PI / 2);
    D3DXVECTOR3 x(1, 0, 0), out;
    D3DXVec3TransformNormal(&out, &x, &ry);
    EXPECT_TRUE(VecNear(out, 0, 0, -1, 1e-6));
    D3DXVECTOR3 yAxis(0, 5, 0);  // not unit: normalised inside
    D3DXMatrixRotationAxis(&ra, &yAxis, (float)PI / 2);
    static const double want[16] = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_TRUE(MatrixNear(ra, want, 1e-6));
}

TEST(MathMatrix, LookAtTakesEyeToOriginAndTargetDownNegativeZ)
{
    D3DXVECTOR3 eye(0, 0, 10), at(0, 0, 0), up(0, 1, 0);
    D3DXMATRIX v;
    D3DXMatrixLookAt(&v, &eye, &at, &up);
    // X = (-1, 0, 0), Y = (0, 1, 0), Z = (0, 0, 1): world +x is on the camera's left
    static const double want[16] = {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -10, 1};
    EXPECT_TRUE(MatrixNear(v, want, 1e-6));

    std::mt19937 rng(5);
    std::uniform_real_distribution<float> dist(-20.0f, 20.0f);
    for (int nCase = 0; nCase < 50; nCase++) {
        D3DXVECTOR3 e(dist(rng), dist(rng), dist(rng)), a(dist(rng), dist(rng), dist(rng)), out;
        D3DXMatrixLookAt(&v, &e, &a, &up);
        D3DXVec3TransformCoord(&out, &e, &v);
        EXPECT_TRUE(VecNear(out, 0, 0, 0, 1e-3)) << "eye, case " << nCase;
        D3DXVECTOR3 d = a - e;
        D3DXVec3TransformCoord(&out, &a, &v);
        EXPECT_TRUE(VecNear(out, 0, 0, -D3DXVec3Length(&d), 1e-3)) << "target, case " << nCase;
    }
}

TEST(MathMatrix, PerspectiveTakesNearAndFarToDepthZeroAndOne)
{
    D3DXMATRIX p;
    D3DXMatrixPerspectiveFov(&p, (float)PI / 2, 0.75f, 1.0f, 10000.0f);
    EXPECT_FLOAT_EQ(p._11, 0.75f);
    EXPECT_FLOAT_EQ(p._22, 1.0f);
    EXPECT_EQ(p._34, -1.0f);

    static const struct { float fNear, fFar; } cases[] = {{1, 10000}, {0.5f, 50}, {10, 11}};
    for (const auto& c : cases) {
        D3DXMatrixPerspectiveFov(&p, 1.2f, 1.0f, c.fNear, c.fFar);
        D3DXVECTOR3 nearPt(0, 0, -c.fNear), farPt(0, 0, -c.fFar), out;
        D3DXVec3TransformCoord(&out, &nearPt, &p);
        EXPECT_NEAR(out.z, 0.0, 1e-5) << "near " << c.fNear;
        D3DXVec3TransformCoord(&out, &farPt, &p);
        EXPECT_NEAR(out.z, 1.0, 1e-5) << "far " << c.fFar;
    }
}
