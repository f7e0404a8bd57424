// Strokes of 1.3 px on 16 by 16.
const strokes: Record<string, string> = {
    plus: "M8 3v10M3 8h10",
    more: "M3 8h.01M8 8h.01M13 8h.01",
    twist: "M6 4l4 4-4 4",
    folder: "M1.8 4.2h4l1.4 1.6h7v7H1.8z",
    view: "M3 14V4l5-2 5 2v10M6 14v-3h4v3M6 6h.01M10 6h.01M6 8.5h.01M10 8.5h.01",
    lock: "M3.5 7h9v6.5h-9zM5.5 7V5a2.5 2.5 0 0 1 5 0v2",
    close: "M4 4l8 8M12 4l-8 8",
    search: "M7 2.5a4.5 4.5 0 1 1 0 9 4.5 4.5 0 0 1 0-9M10.3 10.3l3.2 3.2",
    overview: "M2.5 7.5L8 3l5.5 4.5V13h-11z",
    directory: "M5.5 7.5a2.3 2.3 0 1 1 0-4.6 2.3 2.3 0 0 1 0 4.6M1.5 13c0-2.4 1.8-3.8 4-3.8s4 1.4 4 3.8M10.5 3a2.2 2.2 0 0 1 0 4.4M11.5 9.4c1.8.3 3 1.6 3 3.6",
    roles: "M8 1.8l5 2v4c0 3.2-2 5.2-5 6.4-3-1.2-5-3.2-5-6.4v-4z",
    why: "M6 6a2 2 0 1 1 2.8 1.9c-.6.3-.8.7-.8 1.4M8 11.7h.01M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8",
    rights: "M2.5 4h11M2.5 8h11M2.5 12h11M6 2.5v11",
    documents: "M4 1.8h5l3.2 3.2v9.2H4zM9 1.8V5h3.2M6 8h4M6 10.5h4",
    messages: "M2 3h12v8H7l-3 2.8V11H2z",
    addins: "M3 6h2.2a1.6 1.6 0 1 1 3 0H11v2.3a1.6 1.6 0 1 1 0 3V13.5H3z",
    board: "M2.5 2.5h11v11h-11zM5 5.5h6M5 8h6M5 10.5h3",
    settings: "M8 5.6a2.4 2.4 0 1 1 0 4.8 2.4 2.4 0 0 1 0-4.8M8 1.5v2M8 12.5v2M1.5 8h2M12.5 8h2M3.4 3.4l1.4 1.4M11.2 11.2l1.4 1.4M3.4 12.6l1.4-1.4M11.2 4.8l1.4-1.4",
    import: "M8 2v8M5 7l3 3 3-3M2.5 10.5v3h11v-3",
    audit: "M8 1.8a6.2 6.2 0 1 1 0 12.4A6.2 6.2 0 0 1 8 1.8M8 4.5V8l2.4 1.6",
};

export const Icon = (props: { name: string }) => (
    <svg class="stroke" width="16" height="16" viewBox="0 0 16 16" aria-hidden="true">
        <path d={strokes[props.name] ?? ""} />
    </svg>
);
