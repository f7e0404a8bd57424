// A list of which only the lines in sight are in the document.
import type { ComponentChildren } from "preact";
import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";

const kOverscan = 6;

/** What the keys do that go from line to line. @param page  the lines of a page. @param move  goes to a line. */
export function steps(active: number, count: number, page: number, move: (to: number) => void): Record<string, () => void> {
    const to = (line: number) => () => move(Math.max(0, Math.min(count - 1, line)));
    return {
        ArrowDown: to(active + 1),
        ArrowUp: to(active - 1),
        PageDown: to(active + page),
        PageUp: to(active - page),
        Home: to(0),
        End: to(count - 1),
    };
}

interface Props {
    role: "tree" | "grid";
    label: string;
    id: string;
    class?: string;
    count: number;
    lineHeight: number;
    /** The line that keys act on; it is always in the document. */
    active: number;
    activeId: string | undefined;
    line: (index: number, style: { top: string }) => ComponentChildren;
    onKey: (event: KeyboardEvent, page: number) => void;
    /** The lines that are in sight, once the scroll rests. */
    onRest?: (first: number, last: number) => void;
    attributes?: Record<string, string | number | boolean>;
    onContextMenu?: (event: MouseEvent) => void;
    onFocus?: () => void;
}

export function Scroller(props: Props) {
    const box = useRef<HTMLDivElement>(null);
    const [top, setTop] = useState(0);
    const [height, setHeight] = useState(600);
    useLayoutEffect(() => {
        const element = box.current as HTMLDivElement;
        const measure = new ResizeObserver(() => setHeight(element.clientHeight));
        measure.observe(element);
        return () => measure.disconnect();
    }, []);
    const first = Math.max(0, Math.floor(top / props.lineHeight) - kOverscan);
    const last = Math.min(props.count - 1, Math.ceil((top + height) / props.lineHeight) + kOverscan);
    useEffect(() => {
        const rest = setTimeout(() => props.onRest?.(first, last), 40);
        return () => clearTimeout(rest);
    });
    useLayoutEffect(() => {
        const element = box.current as HTMLDivElement;
        const begin = props.active * props.lineHeight;
        if (props.active >= 0 && document.activeElement === element) {
            if (begin < element.scrollTop) {
                element.scrollTop = begin;
            } else if (begin + props.lineHeight > element.scrollTop + element.clientHeight) {
                element.scrollTop = begin + props.lineHeight - element.clientHeight;
            }
        }
    }, [props.active]);
    const shown: number[] = [];
    for (let i = first; i <= last; ++i) {
        shown.push(i);
    }
    if (props.active >= 0 && props.active < props.count && (props.active < first || props.active > last)) {
        shown.push(props.active);
    }
    return (
        <div
            ref={box}
            id={props.id}
            class={`scroller ${props.class ?? ""}`}
            role={props.role}
            aria-label={props.label}
            tabIndex={0}
            aria-activedescendant={props.activeId}
            onScroll={event => setTop(event.currentTarget.scrollTop)}
            onKeyDown={event => props.onKey(event, Math.max(1, Math.floor(height / props.lineHeight) - 1))}
            onContextMenu={props.onContextMenu}
            onFocus={props.onFocus}
            {...props.attributes}
        >
            <div class="lines" role="presentation" style={{ height: `${props.count * props.lineHeight}px` }}>
                {shown.map(index => props.line(index, { top: `${index * props.lineHeight}px` }))}
            </div>
        </div>
    );
}
