// Public names of the image primitives, by family. Each is an alias of a template instance; the header of the template
// documents arguments and rules.
#pragma once

#include "arithmetic.h"
#include "color.h"
#include "copy.h"
#include "filter.h"
#include "linear_algebra.h"
#include "memory.h"
#include "resize.h"
#include "rotate.h"
#include "scale.h"

/// Does nothing: the dynamic loader has already selected the code for the CPU (see PRIMITIVES_WIDE).
inline primitives::Status ippInit()
{
    return primitives::Status::Ok;
}

// --- Memory ---
inline constexpr auto &ippiMalloc_8u_C1 = primitives::AllocateImage<Ipp8u, 1>;
inline constexpr auto &ippiMalloc_8u_C3 = primitives::AllocateImage<Ipp8u, 3>;
inline constexpr auto &ippiMalloc_8u_C4 = primitives::AllocateImage<Ipp8u, 4>;
inline constexpr auto &ippiMalloc_16u_C1 = primitives::AllocateImage<Ipp16u, 1>;
inline constexpr auto &ippiMalloc_16u_C3 = primitives::AllocateImage<Ipp16u, 3>;
inline constexpr auto &ippiMalloc_16u_C4 = primitives::AllocateImage<Ipp16u, 4>;
inline constexpr auto &ippiMalloc_16s_C1 = primitives::AllocateImage<Ipp16s, 1>;
inline constexpr auto &ippiMalloc_32f_C1 = primitives::AllocateImage<Ipp32f, 1>;
inline constexpr auto &ippiMalloc_32f_C3 = primitives::AllocateImage<Ipp32f, 3>;
inline constexpr auto &ippiMalloc_32f_C4 = primitives::AllocateImage<Ipp32f, 4>;
inline constexpr auto &ippiFree = primitives::Free;
inline constexpr auto &ippFree = primitives::Free;
inline constexpr auto &ippsFree = primitives::Free;

inline Ipp8u *ippsMalloc_8u(std::int64_t bytes)
{
    return static_cast<Ipp8u *>(primitives::Allocate(bytes));
}

// --- Copy, same layout ---
inline constexpr auto &ippiCopy_8u_C1R = primitives::Copy<Ipp8u, 1>;
inline constexpr auto &ippiCopy_8u_C3R = primitives::Copy<Ipp8u, 3>;
inline constexpr auto &ippiCopy_8u_C4R = primitives::Copy<Ipp8u, 4>;
inline constexpr auto &ippiCopy_16u_C1R = primitives::Copy<Ipp16u, 1>;
inline constexpr auto &ippiCopy_16u_C3R = primitives::Copy<Ipp16u, 3>;
inline constexpr auto &ippiCopy_16u_C4R = primitives::Copy<Ipp16u, 4>;
inline constexpr auto &ippiCopy_16s_C1R = primitives::Copy<Ipp16s, 1>;
inline constexpr auto &ippiCopy_32f_C1R = primitives::Copy<Ipp32f, 1>;
inline constexpr auto &ippiCopy_32f_C3R = primitives::Copy<Ipp32f, 3>;
inline constexpr auto &ippiCopy_32f_C4R = primitives::Copy<Ipp32f, 4>;

// --- Copy between layouts: three of four channels, and single planes ---
inline constexpr auto &ippiCopy_8u_C3AC4R = primitives::CopyChannels<Ipp8u, 3, 4, 3>;
inline constexpr auto &ippiCopy_16u_C3AC4R = primitives::CopyChannels<Ipp16u, 3, 4, 3>;
inline constexpr auto &ippiCopy_32f_C3AC4R = primitives::CopyChannels<Ipp32f, 3, 4, 3>;
inline constexpr auto &ippiCopy_8u_AC4C3R = primitives::CopyChannels<Ipp8u, 4, 3, 3>;
inline constexpr auto &ippiCopy_16u_AC4C3R = primitives::CopyChannels<Ipp16u, 4, 3, 3>;
inline constexpr auto &ippiCopy_32f_AC4C3R = primitives::CopyChannels<Ipp32f, 4, 3, 3>;
inline constexpr auto &ippiCopy_8u_C1C3R = primitives::CopyChannels<Ipp8u, 1, 3, 1>;
inline constexpr auto &ippiCopy_16u_C1C3R = primitives::CopyChannels<Ipp16u, 1, 3, 1>;
inline constexpr auto &ippiCopy_32f_C1C3R = primitives::CopyChannels<Ipp32f, 1, 3, 1>;
inline constexpr auto &ippiCopy_8u_C1C4R = primitives::CopyChannels<Ipp8u, 1, 4, 1>;
inline constexpr auto &ippiCopy_16u_C1C4R = primitives::CopyChannels<Ipp16u, 1, 4, 1>;
inline constexpr auto &ippiCopy_32f_C1C4R = primitives::CopyChannels<Ipp32f, 1, 4, 1>;
inline constexpr auto &ippiCopy_8u_C3C1R = primitives::CopyChannels<Ipp8u, 3, 1, 1>;
inline constexpr auto &ippiCopy_16u_C3C1R = primitives::CopyChannels<Ipp16u, 3, 1, 1>;
inline constexpr auto &ippiCopy_32f_C3C1R = primitives::CopyChannels<Ipp32f, 3, 1, 1>;
inline constexpr auto &ippiCopy_8u_C4C1R = primitives::CopyChannels<Ipp8u, 4, 1, 1>;
inline constexpr auto &ippiCopy_16u_C4C1R = primitives::CopyChannels<Ipp16u, 4, 1, 1>;
inline constexpr auto &ippiCopy_32f_C4C1R = primitives::CopyChannels<Ipp32f, 4, 1, 1>;

// --- Set ---
inline constexpr auto &ippiSet_8u_C4R = primitives::Set4<Ipp8u>;
inline constexpr auto &ippiSet_16u_C4R = primitives::Set4<Ipp16u>;
inline constexpr auto &ippiSet_32f_C4R = primitives::Set4<Ipp32f>;
inline constexpr auto &ippiSet_32f_C1MR = primitives::SetMasked<Ipp32f>;

// --- Channel order ---
inline constexpr auto &ippiSwapChannels_8u_C3R = primitives::SwapChannels<Ipp8u, 3, 3>;
inline constexpr auto &ippiSwapChannels_16u_C3R = primitives::SwapChannels<Ipp16u, 3, 3>;
inline constexpr auto &ippiSwapChannels_32f_C3R = primitives::SwapChannels<Ipp32f, 3, 3>;
inline constexpr auto &ippiSwapChannels_8u_AC4R = primitives::SwapChannels<Ipp8u, 4, 3>;
inline constexpr auto &ippiSwapChannels_16u_AC4R = primitives::SwapChannels<Ipp16u, 4, 3>;
inline constexpr auto &ippiSwapChannels_32f_AC4R = primitives::SwapChannels<Ipp32f, 4, 3>;
inline constexpr auto &ippiSwapChannels_8u_C4IR = primitives::SwapChannelsInPlace<Ipp8u, 4, 4>;

// --- Depth ---
inline constexpr auto &ippiScale_8u16u_C1R = primitives::Scale8To16<1>;
inline constexpr auto &ippiScale_8u16u_C3R = primitives::Scale8To16<3>;
inline constexpr auto &ippiScale_8u16u_C4R = primitives::Scale8To16<4>;
inline constexpr auto &ippiScale_16u8u_C1R = primitives::Scale16To8<1>;
inline constexpr auto &ippiScale_16u8u_C3R = primitives::Scale16To8<3>;
inline constexpr auto &ippiScale_16u8u_C4R = primitives::Scale16To8<4>;
inline constexpr auto &ippiScale_8u32f_C1R = primitives::Scale8ToFloat<1>;
inline constexpr auto &ippiScale_8u32f_C3R = primitives::Scale8ToFloat<3>;
inline constexpr auto &ippiScale_8u32f_C4R = primitives::Scale8ToFloat<4>;
inline constexpr auto &ippiScale_32f8u_C1R = primitives::ScaleFloatTo8<1>;
inline constexpr auto &ippiScale_32f8u_C3R = primitives::ScaleFloatTo8<3>;
inline constexpr auto &ippiScale_32f8u_C4R = primitives::ScaleFloatTo8<4>;
inline constexpr auto &ippiConvert_16u32f_C1R = primitives::Convert16ToFloat<1>;
inline constexpr auto &ippiConvert_16u32f_C3R = primitives::Convert16ToFloat<3>;
inline constexpr auto &ippiConvert_16u32f_C4R = primitives::Convert16ToFloat<4>;
inline constexpr auto &ippiConvert_32f16u_C1R = primitives::ConvertFloatTo16<1>;
inline constexpr auto &ippiConvert_32f16u_C3R = primitives::ConvertFloatTo16<3>;
inline constexpr auto &ippiConvert_32f16u_C4R = primitives::ConvertFloatTo16<4>;

// --- Arithmetic with constants ---
inline constexpr auto &ippiMulC_32f_C1R = primitives::CombineConstant<primitives::MulOp>;
inline constexpr auto &ippiMulC_32f_C3R = primitives::CombineConstants<primitives::MulOp, 3>;
inline constexpr auto &ippiMulC_32f_C4R = primitives::CombineConstants<primitives::MulOp, 4>;
inline constexpr auto &ippiDivC_32f_C1R = primitives::CombineConstant<primitives::DivOp>;
inline constexpr auto &ippiDivC_32f_C3R = primitives::CombineConstants<primitives::DivOp, 3>;
inline constexpr auto &ippiDivC_32f_C4R = primitives::CombineConstants<primitives::DivOp, 4>;
inline constexpr auto &ippiMulC_8u_C1RSfs = primitives::MulConstantScaled<Ipp8u>;
inline constexpr auto &ippiMulC_8u_C3RSfs = primitives::MulConstantsScaled<Ipp8u, 3>;
inline constexpr auto &ippiMulC_8u_C4RSfs = primitives::MulConstantsScaled<Ipp8u, 4>;
inline constexpr auto &ippiMulC_16u_C1RSfs = primitives::MulConstantScaled<Ipp16u>;
inline constexpr auto &ippiMulC_16u_C3RSfs = primitives::MulConstantsScaled<Ipp16u, 3>;
inline constexpr auto &ippiMulC_16u_C4RSfs = primitives::MulConstantsScaled<Ipp16u, 4>;

// --- Arithmetic of images: the first source is the subtrahend or the divisor ---
inline constexpr auto &ippiAdd_32f_C1R = primitives::Combine<primitives::AddOp, 1>;
inline constexpr auto &ippiAdd_32f_C3R = primitives::Combine<primitives::AddOp, 3>;
inline constexpr auto &ippiAdd_32f_C4R = primitives::Combine<primitives::AddOp, 4>;
inline constexpr auto &ippiSub_32f_C1R = primitives::Combine<primitives::SubOp, 1>;
inline constexpr auto &ippiSub_32f_C3R = primitives::Combine<primitives::SubOp, 3>;
inline constexpr auto &ippiSub_32f_C4R = primitives::Combine<primitives::SubOp, 4>;
inline constexpr auto &ippiMul_32f_C1R = primitives::Combine<primitives::MulOp, 1>;
inline constexpr auto &ippiMul_32f_C3R = primitives::Combine<primitives::MulOp, 3>;
inline constexpr auto &ippiMul_32f_C4R = primitives::Combine<primitives::MulOp, 4>;
inline constexpr auto &ippiDiv_32f_C1R = primitives::Combine<primitives::DivOp, 1>;
inline constexpr auto &ippiAdd_8u_C1RSfs = primitives::CombineScaled<primitives::AddOp, Ipp8u, 1>;
inline constexpr auto &ippiAdd_8u_C3RSfs = primitives::CombineScaled<primitives::AddOp, Ipp8u, 3>;
inline constexpr auto &ippiAdd_8u_C4RSfs = primitives::CombineScaled<primitives::AddOp, Ipp8u, 4>;
inline constexpr auto &ippiSub_8u_C1RSfs = primitives::CombineScaled<primitives::SubOp, Ipp8u, 1>;
inline constexpr auto &ippiSub_8u_C3RSfs = primitives::CombineScaled<primitives::SubOp, Ipp8u, 3>;
inline constexpr auto &ippiSub_8u_C4RSfs = primitives::CombineScaled<primitives::SubOp, Ipp8u, 4>;
inline constexpr auto &ippiMul_8u_C1RSfs = primitives::CombineScaled<primitives::MulOp, Ipp8u, 1>;
inline constexpr auto &ippiMul_8u_C3RSfs = primitives::CombineScaled<primitives::MulOp, Ipp8u, 3>;
inline constexpr auto &ippiMul_8u_C4RSfs = primitives::CombineScaled<primitives::MulOp, Ipp8u, 4>;
inline constexpr auto &ippiMul_16u_C1RSfs = primitives::CombineScaled<primitives::MulOp, Ipp16u, 1>;
inline constexpr auto &ippiCompareC_32f_C1R = primitives::CompareConstant<Ipp32f>;
inline constexpr auto &ippiThreshold_Val_8u_C1R = primitives::ThresholdValue<Ipp8u>;
inline constexpr auto &ippiThreshold_Val_16u_C1R = primitives::ThresholdValue<Ipp16u>;
inline constexpr auto &ippiThreshold_Val_32f_C1R = primitives::ThresholdValue<Ipp32f>;

// --- Color models ---
inline constexpr auto &ippiRGBToGray_8u_C3C1R = primitives::RgbToGray<Ipp8u, 3>;
inline constexpr auto &ippiRGBToGray_8u_AC4C1R = primitives::RgbToGray<Ipp8u, 4>;
inline constexpr auto &ippiRGBToGray_16u_C3C1R = primitives::RgbToGray<Ipp16u, 3>;
inline constexpr auto &ippiRGBToGray_16u_AC4C1R = primitives::RgbToGray<Ipp16u, 4>;
inline constexpr auto &ippiRGBToGray_32f_C3C1R = primitives::RgbToGray<Ipp32f, 3>;
inline constexpr auto &ippiRGBToGray_32f_AC4C1R = primitives::RgbToGray<Ipp32f, 4>;
inline constexpr auto &ippiRGBToHSV_8u_AC4R = primitives::RgbToHsv8;
inline constexpr auto &ippiHSVToRGB_8u_AC4R = primitives::HsvToRgb8;
inline constexpr auto &ippiRGBToYCC_8u_C3R = primitives::RgbToYcc<Ipp8u, 3>;
inline constexpr auto &ippiRGBToYCC_8u_AC4R = primitives::RgbToYcc<Ipp8u, 4>;
inline constexpr auto &ippiRGBToYCC_16u_C3R = primitives::RgbToYcc<Ipp16u, 3>;
inline constexpr auto &ippiRGBToYCC_16u_AC4R = primitives::RgbToYcc<Ipp16u, 4>;
inline constexpr auto &ippiRGBToYCC_32f_C3R = primitives::RgbToYcc<Ipp32f, 3>;
inline constexpr auto &ippiRGBToYCC_32f_AC4R = primitives::RgbToYcc<Ipp32f, 4>;
inline constexpr auto &ippiYCCToRGB_8u_C3R = primitives::YccToRgb<Ipp8u, 3>;
inline constexpr auto &ippiYCCToRGB_8u_AC4R = primitives::YccToRgb<Ipp8u, 4>;
inline constexpr auto &ippiYCCToRGB_16u_C3R = primitives::YccToRgb<Ipp16u, 3>;
inline constexpr auto &ippiYCCToRGB_16u_AC4R = primitives::YccToRgb<Ipp16u, 4>;
inline constexpr auto &ippiYCCToRGB_32f_C3R = primitives::YccToRgb<Ipp32f, 3>;
inline constexpr auto &ippiYCCToRGB_32f_AC4R = primitives::YccToRgb<Ipp32f, 4>;

// --- Filters ---
inline constexpr auto &ippiFilterGaussBorder_32f_C1R = primitives::FilterGaussBorder;
inline constexpr auto &ippiFilterGaussGetBufferSize_32f_C1R = primitives::FilterGaussGetBufferSize;
inline constexpr auto &ippiFilterGaussianInit = primitives::FilterGaussianInit;
inline constexpr auto &ippiFilterGaussianGetBufferSize = primitives::FilterGaussianGetBufferSize;
inline constexpr auto &ippiFilterGaussianBorder_32f_C1R = primitives::FilterGaussianBorder;
inline constexpr auto &ippiFilterMedianCross_16s_C1R = primitives::FilterMedianCross;
inline constexpr auto &ippiFilterSobelHoriz_16s_C1R = primitives::FilterSobelHoriz;

// --- Geometry: the preparation of a resize doesn't depend on the depth ---
inline constexpr auto &ippiResizeGetSize_8u = primitives::ResizeGetSize;
inline constexpr auto &ippiResizeGetSize_16u = primitives::ResizeGetSize;
inline constexpr auto &ippiResizeGetSize_32f = primitives::ResizeGetSize;
inline constexpr auto &ippiResizeGetBufferSize_8u = primitives::ResizeGetBufferSize;
inline constexpr auto &ippiResizeGetBufferSize_16u = primitives::ResizeGetBufferSize;
inline constexpr auto &ippiResizeGetBufferSize_32f = primitives::ResizeGetBufferSize;
inline constexpr auto &ippiResizeSuperInit_8u = primitives::ResizeSuperInit;
inline constexpr auto &ippiResizeSuperInit_16u = primitives::ResizeSuperInit;
inline constexpr auto &ippiResizeSuperInit_32f = primitives::ResizeSuperInit;
inline constexpr auto &ippiResizeLinearInit_8u = primitives::ResizeLinearInit;
inline constexpr auto &ippiResizeLinearInit_16u = primitives::ResizeLinearInit;
inline constexpr auto &ippiResizeLinearInit_32f = primitives::ResizeLinearInit;
inline constexpr auto &ippiResizeSuper_8u_C1R = primitives::ResizeSuper<Ipp8u, 1>;
inline constexpr auto &ippiResizeSuper_8u_C3R = primitives::ResizeSuper<Ipp8u, 3>;
inline constexpr auto &ippiResizeSuper_8u_C4R = primitives::ResizeSuper<Ipp8u, 4>;
inline constexpr auto &ippiResizeSuper_16u_C1R = primitives::ResizeSuper<Ipp16u, 1>;
inline constexpr auto &ippiResizeSuper_16u_C3R = primitives::ResizeSuper<Ipp16u, 3>;
inline constexpr auto &ippiResizeSuper_16u_C4R = primitives::ResizeSuper<Ipp16u, 4>;
inline constexpr auto &ippiResizeSuper_32f_C1R = primitives::ResizeSuper<Ipp32f, 1>;
inline constexpr auto &ippiResizeSuper_32f_C3R = primitives::ResizeSuper<Ipp32f, 3>;
inline constexpr auto &ippiResizeSuper_32f_C4R = primitives::ResizeSuper<Ipp32f, 4>;
inline constexpr auto &ippiResizeLinear_8u_C1R = primitives::ResizeLinear<Ipp8u, 1>;
inline constexpr auto &ippiResizeLinear_8u_C3R = primitives::ResizeLinear<Ipp8u, 3>;
inline constexpr auto &ippiResizeLinear_8u_C4R = primitives::ResizeLinear<Ipp8u, 4>;
inline constexpr auto &ippiResizeLinear_16u_C1R = primitives::ResizeLinear<Ipp16u, 1>;
inline constexpr auto &ippiResizeLinear_16u_C3R = primitives::ResizeLinear<Ipp16u, 3>;
inline constexpr auto &ippiResizeLinear_16u_C4R = primitives::ResizeLinear<Ipp16u, 4>;
inline constexpr auto &ippiResizeLinear_32f_C1R = primitives::ResizeLinear<Ipp32f, 1>;
inline constexpr auto &ippiResizeLinear_32f_C3R = primitives::ResizeLinear<Ipp32f, 3>;
inline constexpr auto &ippiResizeLinear_32f_C4R = primitives::ResizeLinear<Ipp32f, 4>;
inline constexpr auto &ippiRotate_32f_C4R = primitives::RotateFloat4;

// --- Small matrices ---
inline constexpr auto &ippmLUDecomp_m_32f = primitives::LuDecompose;
inline constexpr auto &ippmLUBackSubst_mva_32f = primitives::LuBackSubstitute;
