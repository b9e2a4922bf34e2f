// Vector and matrix math of the graphics support layer.
//
// Used by the camera, the streams, GLPort's shapes and the context. Vectors are
// row vectors (v' = v * M), matrices are row-major with the translation in the
// fourth row, and A * B applies A first. Angles are radians.
//
// Step by step: build matrices with D3DXMatrixIdentity, D3DXMatrixLookAt,
// D3DXMatrixPerspectiveFov and the rotations; combine them with
// D3DXMatrixMultiply; move points with D3DXVec3TransformCoord and directions
// with D3DXVec3TransformNormal.
//
// Results: every operation writes its output (the first argument) and returns
// it. Output and input may be the same object: inputs are read before anything
// is written. Only D3DXMatrixInverse can fail: it returns null for a singular
// matrix and leaves the output as it was.
//
// Limits: no pointer is checked, nothing allocates, nothing keeps state.
// D3DXVec3Normalize leaves a vector within 1e-5 of unit length untouched and
// turns one of squared length at most 1e-10 into the zero vector.
#ifndef ZYNMATH_H
#define ZYNMATH_H

#include <windows.h>
#include <d3d.h>
#include <math.h>

struct D3DXVECTOR3 : public D3DVECTOR {
    D3DXVECTOR3() {}
    D3DXVECTOR3(float fx, float fy, float fz) { x = fx; y = fy; z = fz; }
    D3DXVECTOR3(const D3DVECTOR& v) { x = v.x; y = v.y; z = v.z; }

    D3DXVECTOR3 operator-() const { return D3DXVECTOR3(-x, -y, -z); }
    D3DXVECTOR3 operator+(const D3DXVECTOR3& v) const { return D3DXVECTOR3(x + v.x, y + v.y, z + v.z); }
    D3DXVECTOR3 operator-(const D3DXVECTOR3& v) const { return D3DXVECTOR3(x - v.x, y - v.y, z - v.z); }
    D3DXVECTOR3 operator*(float s) const { return D3DXVECTOR3(x * s, y * s, z * s); }
    D3DXVECTOR3 operator/(float s) const { float r = 1.0f / s; return D3DXVECTOR3(x * r, y * r, z * r); }
    D3DXVECTOR3& operator+=(const D3DXVECTOR3& v) { x += v.x; y += v.y; z += v.z; return *this; }
    D3DXVECTOR3& operator-=(const D3DXVECTOR3& v) { x -= v.x; y -= v.y; z -= v.z; return *this; }
    D3DXVECTOR3& operator*=(float s) { x *= s; y *= s; z *= s; return *this; }
    D3DXVECTOR3& operator/=(float s) { float r = 1.0f / s; return *this *= r; }
    bool operator==(const D3DXVECTOR3& v) const { return x == v.x && y == v.y && z == v.z; }
    bool operator!=(const D3DXVECTOR3& v) const { return !(*this == v); }
};

inline D3DXVECTOR3 operator*(float s, const D3DXVECTOR3& v) { return v * s; }

struct D3DXMATRIX : public D3DMATRIX {
    D3DXMATRIX() {}
    D3DXMATRIX(const D3DMATRIX& m) : D3DMATRIX(m) {}
    float& operator()(int nRow, int nCol) { return (&_11)[nRow * 4 + nCol]; }
    float operator()(int nRow, int nCol) const { return (&_11)[nRow * 4 + nCol]; }
};

// vector basics
inline float D3DXVec3Dot(const D3DXVECTOR3* a, const D3DXVECTOR3* b)
{
    return a->x * b->x + a->y * b->y + a->z * b->z;
}
inline float D3DXVec3LengthSq(const D3DXVECTOR3* v) { return v->x * v->x + v->y * v->y + v->z * v->z; }
inline float D3DXVec3Length(const D3DXVECTOR3* v)
{
    return (float)sqrt((double)(v->x * v->x + v->y * v->y + v->z * v->z));
}
inline D3DXVECTOR3* D3DXVec3Cross(D3DXVECTOR3* pOut, const D3DXVECTOR3* a, const D3DXVECTOR3* b)
{
    D3DXVECTOR3 t;
    t.x = a->y * b->z - a->z * b->y;
    t.y = a->z * b->x - a->x * b->z;
    t.z = a->x * b->y - a->y * b->x;
    *pOut = t;
    return pOut;
}
inline D3DCOLORVALUE* D3DXColor(D3DCOLORVALUE* pOut, float r, float g, float b, float a)
{
    pOut->r = r; pOut->g = g; pOut->b = b; pOut->a = a;
    return pOut;
}
inline D3DXMATRIX* D3DXMatrixIdentity(D3DXMATRIX* pOut)
{
    pOut->_12 = pOut->_13 = pOut->_14 = pOut->_21 = pOut->_23 = pOut->_24 = 0.0f;
    pOut->_31 = pOut->_32 = pOut->_34 = pOut->_41 = pOut->_42 = pOut->_43 = 0.0f;
    pOut->_11 = pOut->_22 = pOut->_33 = pOut->_44 = 1.0f;
    return pOut;
}

// vectors
D3DXVECTOR3* D3DXVec3Normalize(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV);
D3DXVECTOR3* D3DXVec3TransformCoord(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM);
D3DXVECTOR3* D3DXVec3TransformNormal(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM);

// matrices
D3DXMATRIX* D3DXMatrixMultiply(D3DXMATRIX* pOut, const D3DXMATRIX* pA, const D3DXMATRIX* pB);
D3DXMATRIX* D3DXMatrixInverse(D3DXMATRIX* pOut, float* pDeterminant, const D3DXMATRIX* pM);
D3DXMATRIX* D3DXMatrixRotationY(D3DXMATRIX* pOut, float fAngle);
D3DXMATRIX* D3DXMatrixRotationAxis(D3DXMATRIX* pOut, const D3DXVECTOR3* pAxis, float fAngle);
D3DXMATRIX* D3DXMatrixLookAt(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye, const D3DXVECTOR3* pAt, const D3DXVECTOR3* pUp);
D3DXMATRIX* D3DXMatrixPerspectiveFov(D3DXMATRIX* pOut, float fFovY, float fAspect, float fNear, float fFar);

#endif
