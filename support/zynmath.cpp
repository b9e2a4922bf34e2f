// Vector and matrix operations. The tolerances of Normalize and TransformCoord
// are part of the contract: the camera leans on a near-unit vector being left
// exactly as it is, and on a plain affine matrix never dividing.
#include "zynmath.h"

#include <string.h>

static const float UNIT_TOLERANCE = 0.00001f;   // |l - 1| at or below this counts as unit
static const float ZERO_LENGTH_SQ = 1e-10f;     // squared lengths at or below this give zero

D3DXVECTOR3* D3DXVec3Normalize(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV)
{
    const float x = pV->x, y = pV->y, z = pV->z;
    const float fLenSq = x * x + y * y + z * z;
    const float fOff = fLenSq - 1.0f;
    if (fOff >= -UNIT_TOLERANCE && fOff <= UNIT_TOLERANCE) {
        pOut->x = x; pOut->y = y; pOut->z = z;
        return pOut;
    }
    if (fLenSq <= ZERO_LENGTH_SQ) {
        pOut->x = pOut->y = pOut->z = 0.0f;
        return pOut;
    }
    const float r = 1.0f / sqrtf(fLenSq);
    pOut->x = r * x; pOut->y = r * y; pOut->z = r * z;
    return pOut;
}

D3DXVECTOR3* D3DXVec3TransformCoord(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM)
{
    const float x = pV->x, y = pV->y, z = pV->z;
    float X = x * pM->_11 + y * pM->_21 + z * pM->_31 + pM->_41;
    float Y = x * pM->_12 + y * pM->_22 + z * pM->_32 + pM->_42;
    float Z = x * pM->_13 + y * pM->_23 + z * pM->_33 + pM->_43;
    const float W = x * pM->_14 + y * pM->_24 + z * pM->_34 + pM->_44;
    const float fOff = W - 1.0f;
    if (fOff < -UNIT_TOLERANCE || fOff > UNIT_TOLERANCE) {
        const float r = 1.0f / W;
        X *= r; Y *= r; Z *= r;
    }
    pOut->x = X; pOut->y = Y; pOut->z = Z;
    return pOut;
}

D3DXVECTOR3* D3DXVec3TransformNormal(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM)
{
    const float x = pV->x, y = pV->y, z = pV->z;
    pOut->x = x * pM->_11 + y * pM->_21 + z * pM->_31;
    pOut->y = x * pM->_12 + y * pM->_22 + z * pM->_32;
    pOut->z = x * pM->_13 + y * pM->_23 + z * pM->_33;
    return pOut;
}

// The product goes through a temporary, which covers every aliasing of out
// with A and B at once.
D3DXMATRIX* D3DXMatrixMultiply(D3DXMATRIX* pOut, const D3DXMATRIX* pA, const D3DXMATRIX* pB)
{
    const float* a = &pA->_11;
    const float* b = &pB->_11;
    float r[16];
    for (int i = 0; i < 4; i++) {
        for (int j = 0; j < 4; j++) {
            r[i * 4 + j] = a[i * 4 + 0] * b[0 * 4 + j] + a[i * 4 + 1] * b[1 * 4 + j] +
                           a[i * 4 + 2] * b[2 * 4 + j] + a[i * 4 + 3] * b[3 * 4 + j];
        }
    }
    memcpy(&pOut->_11, r, sizeof(r));
    return pOut;
}

// Inverse by 2 x 2 sub-determinants of the upper and lower row pairs.
D3DXMATRIX* D3DXMatrixInverse(D3DXMATRIX* pOut, float* pDeterminant, const D3DXMATRIX* pM)
{
    const float* m = &pM->_11;
    const float a0 = m[0] * m[5] - m[1] * m[4];
    const float a1 = m[0] * m[6] - m[2] * m[4];
    const float a2 = m[0] * m[7] - m[3] * m[4];
    const float a3 = m[1] * m[6] - m[2] * m[5];
    const float a4 = m[1] * m[7] - m[3] * m[5];
    const float a5 = m[2] * m[7] - m[3] * m[6];
    const float b0 = m[8] * m[13] - m[9] * m[12];
    const float b1 = m[8] * m[14] - m[10] * m[12];
    const float b2 = m[8] * m[15] - m[11] * m[12];
    const float b3 = m[9] * m[14] - m[10] * m[13];
    const float b4 = m[9] * m[15] - m[11] * m[13];
    const float b5 = m[10] * m[15] - m[11] * m[14];

    const float d = a0 * b5 - a1 * b4 + a2 * b3 + a3 * b2 - a4 * b1 + a5 * b0;
    if (pDeterminant)
        *pDeterminant = d;
    const float r = 1.0f / d;
    if (!isfinite(r))
        return NULL;

    float o[16];
    o[0]  = ( m[5] * b5 - m[6] * b4 + m[7] * b3) * r;
    o[1]  = (-m[1] * b5 + m[2] * b4 - m[3] * b3) * r;
    o[2]  = ( m[13] * a5 - m[14] * a4 + m[15] * a3) * r;
    o[3]  = (-m[9] * a5 + m[10] * a4 - m[11] * a3) * r;
    o[4]  = (-m[4] * b5 + m[6] * b2 - m[7] * b1) * r;
    o[5]  = ( m[0] * b5 - m[2] * b2 + m[3] * b1) * r;
    o[6]  = (-m[12] * a5 + m[14] * a2 - m[15] * a1) * r;
    o[7]  = ( m[8] * a5 - m[10] * a2 + m[11] * a1) * r;
    o[8]  = ( m[4] * b4 - m[5] * b2 + m[7] * b0) * r;
    o[9]  = (-m[0] * b4 + m[1] * b2 - m[3] * b0) * r;
    o[10] = ( m[12] * a4 - m[13] * a2 + m[15] * a0) * r;
    o[11] = (-m[8] * a4 + m[9] * a2 - m[11] * a0) * r;
    o[12] = (-m[4] * b3 + m[5] * b1 - m[6] * b0) * r;
    o[13] = ( m[0] * b3 - m[1] * b1 + m[2] * b0) * r;
    o[14] = (-m[12] * a3 + m[13] * a1 - m[14] * a0) * r;
    o[15] = ( m[8] * a3 - m[9] * a1 + m[10] * a0) * r;
    memcpy(&pOut->_11, o, sizeof(o));
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationY(D3DXMATRIX* pOut, float fAngle)
{
    const float c = cosf(fAngle), s = sinf(fAngle);
    D3DXMatrixIdentity(pOut);
    pOut->_11 = c;  pOut->_13 = -s;
    pOut->_31 = s;  pOut->_33 = c;
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationAxis(D3DXMATRIX* pOut, const D3DXVECTOR3* pAxis, float fAngle)
{
    D3DXVECTOR3 v;
    D3DXVec3Normalize(&v, pAxis);
    const float x = v.x, y = v.y, z = v.z;
    const float c = cosf(fAngle), s = sinf(fAngle), t = 1.0f - c;
    pOut->_11 = x * x * t + c;     pOut->_12 = x * y * t + z * s; pOut->_13 = z * x * t - y * s; pOut->_14 = 0.0f;
    pOut->_21 = x * y * t - z * s; pOut->_22 = y * y * t + c;     pOut->_23 = y * z * t + x * s; pOut->_24 = 0.0f;
    pOut->_31 = z * x * t + y * s; pOut->_32 = y * z * t - x * s; pOut->_33 = z * z * t + c;     pOut->_34 = 0.0f;
    pOut->_41 = 0.0f;              pOut->_42 = 0.0f;              pOut->_43 = 0.0f;              pOut->_44 = 1.0f;
    return pOut;
}

// Right-handed view matrix: view-space z points from the target to the eye.
D3DXMATRIX* D3DXMatrixLookAt(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye, const D3DXVECTOR3* pAt,
                             const D3DXVECTOR3* pUp)
{
    const D3DXVECTOR3 eye = *pEye;
    D3DXVECTOR3 Z(eye.x - pAt->x, eye.y - pAt->y, eye.z - pAt->z);
    D3DXVec3Normalize(&Z, &Z);
    D3DXVECTOR3 X, Y;
    D3DXVec3Cross(&X, &Z, pUp);
    D3DXVec3Normalize(&X, &X);
    D3DXVec3Cross(&Y, &X, &Z);

    pOut->_11 = X.x; pOut->_12 = Y.x; pOut->_13 = Z.x; pOut->_14 = 0.0f;
    pOut->_21 = X.y; pOut->_22 = Y.y; pOut->_23 = Z.y; pOut->_24 = 0.0f;
    pOut->_31 = X.z; pOut->_32 = Y.z; pOut->_33 = Z.z; pOut->_34 = 0.0f;
    pOut->_41 = -D3DXVec3Dot(&eye, &X);
    pOut->_42 = -D3DXVec3Dot(&eye, &Y);
    pOut->_43 = -D3DXVec3Dot(&eye, &Z);
    pOut->_44 = 1.0f;
    return pOut;
}

// fAspect is height over width and scales x; depth runs 0 at zn to 1 at zf
// for points in front of a look-at camera.
D3DXMATRIX* D3DXMatrixPerspectiveFov(D3DXMATRIX* pOut, float fFovY, float fAspect, float fNear, float fFar)
{
    const float fHalf = fFovY * 0.5f;
    const float fCot = cosf(fHalf) / sinf(fHalf);
    const float Q = fFar / (fNear - fFar);
    memset(&pOut->_11, 0, sizeof(D3DMATRIX));
    pOut->_11 = fCot * fAspect;
    pOut->_22 = fCot;
    pOut->_33 = Q;
    pOut->_34 = -1.0f;
    pOut->_43 = fNear * Q;
    return pOut;
}
