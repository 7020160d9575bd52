// Check-only: the layer and geometry interfaces the adapter uses, with the
// platform's signatures. GNUstep has no Core Animation; its NSSize, NSPoint
// and NSRect stand for the Core Graphics structs, which they are on the
// platform.
#pragma once

#import <AppKit/AppKit.h>

typedef NSSize CGSize;
typedef NSPoint CGPoint;
typedef NSRect CGRect;
typedef struct __attribute__((objc_bridge(id))) CGColor* CGColorRef;

struct CGAffineTransform {
    CGFloat a, b, c, d, tx, ty;
};
typedef struct CGAffineTransform CGAffineTransform;

#ifdef __cplusplus
extern "C" {
#endif
CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty);
CGAffineTransform CGAffineTransformScale(CGAffineTransform t, CGFloat sx, CGFloat sy);
CGAffineTransform CGAffineTransformRotate(CGAffineTransform t, CGFloat angle);
#ifdef __cplusplus
}
#endif
static inline CGSize CGSizeMake(CGFloat width, CGFloat height) { return NSMakeSize(width, height); }

typedef NSString* CALayerContentsGravity;
extern CALayerContentsGravity const kCAGravityResizeAspectFill;

NS_ASSUME_NONNULL_BEGIN

@interface CALayer : NSObject
@property(nullable) CGColorRef backgroundColor;
@property(nullable) CGColorRef borderColor;
@property CGFloat borderWidth;
@property CGFloat cornerRadius;
@property BOOL masksToBounds;
@property(nullable) CGColorRef shadowColor;
@property float shadowOpacity;
@property CGFloat shadowRadius;
@property CGSize shadowOffset;
@property CGFloat zPosition;
@property(copy) CALayerContentsGravity contentsGravity;
- (CGAffineTransform)affineTransform;
- (void)setAffineTransform:(CGAffineTransform)transform;
@end

@interface NSView (PlatformLayers)
@property BOOL wantsLayer;
@property(nullable, strong) CALayer* layer;
@end

@interface NSColor (PlatformLayers)
@property(readonly) CGColorRef CGColor;
@end

NS_ASSUME_NONNULL_END
